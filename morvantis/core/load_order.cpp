// Every object that static initialisation creates, in one list from first to last. Nothing else in
// the library has a dynamic initialiser; the heap's own start-up comes behind this list.
