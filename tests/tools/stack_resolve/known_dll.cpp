// A Windows image with a PDB file, for tests of their readers. It is never run.
namespace known {

struct Walker {
	[[gnu::noinline]] int step(int distance) const;
};

} // namespace known

volatile int counter;

int known::Walker::step(int distance) const {
	counter = distance;
	return distance + 1;
}

extern "C" __declspec(dllexport) int known_entry(int distance) {
	const known::Walker walker;
	counter = 1;
	return walker.step(distance) + 2;
}

extern "C" int DllMainCRTStartup(void*, unsigned int, void*) { return 1; }
