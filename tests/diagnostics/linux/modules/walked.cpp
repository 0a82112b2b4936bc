// A library whose frames are as long as the build says, in functions of equal length: loaded one
// after the other, two of them have the same places with other rules.
namespace {

volatile int left_to_do;

// Inlined wherever it is called.
inline void keep_busy(volatile char (&bytes)[WALKED_FRAME_BYTES]) {
	bytes[0] = bytes[WALKED_FRAME_BYTES - 1] = 1;
	left_to_do = left_to_do ^ bytes[0];
}

} // namespace

using Work = void (*)(void* data);

extern "C" __attribute__((visibility("default"))) void walk_through(int depth, Work work,
                                                                    void* data) {
	volatile char bytes[WALKED_FRAME_BYTES];
	keep_busy(bytes);
	if (depth > 1)
		walk_through(depth - 1, work, data);
	else
		work(data);
	keep_busy(bytes);
}
