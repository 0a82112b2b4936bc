// A function that nobody calls, so large that a place at 0 covers an image's first code.

[[gnu::noinline, gnu::used]] static void large() { asm volatile(".skip 0x8000, 0x90"); }
