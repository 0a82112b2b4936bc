// A library with a symbol file, whose functions and lines the tests know.

using Callback = void (*)(void*);

namespace known {

[[gnu::noinline]] void inner(Callback callback, void* data) {
	callback(data); // a stack shows the line that it returns to, which is 9
	asm volatile("");
}

[[gnu::noinline]] void outer(Callback callback, void* data) {
	inner(callback, data); // 14
	asm volatile("");
}

} // namespace known

extern "C" __declspec(dllexport) void call_through(Callback callback, void* data) {
	known::outer(callback, data); // 21
	asm volatile("");
}
