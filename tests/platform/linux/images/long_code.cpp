// A path and a name that are longer than any answer about them. Both are given by the build.
extern "C" {

#line 7 LONG_PATH
[[gnu::visibility("default")]] void short_function() { asm volatile(""); }

#line 8 "folder/short.cpp"
[[gnu::visibility("default")]] void LONG_FUNCTION() { asm volatile(""); }
}
