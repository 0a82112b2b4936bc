// A library for the module cache to load; nobody calls it.

int cached_library_answer();

int cached_library_answer() { return 42; }
