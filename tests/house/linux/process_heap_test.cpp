// The process's own heap functions stay those of the C and C++ run-times, for the program and for
// the library in it.

#include <morvantis/memory/xylheap.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include <dlfcn.h>

namespace {

// File name of the image that the code at `address` belongs to.
std::string image_of(const void* address) {
	Dl_info info{};
	if (dladdr(address, &info) == 0 || !info.dli_fname) return "no image";
	const std::string path = info.dli_fname;
	return path.substr(path.rfind('/') + 1);
}

struct Heap_function {
	const char* name;  // as the linker knows it
	const char* image; // what it begins with
};

constexpr Heap_function heap_functions[] = {
	{"malloc", "libc.so."},
	{"free", "libc.so."},
	{"calloc", "libc.so."},
	{"realloc", "libc.so."},
	{"posix_memalign", "libc.so."},
	{"aligned_alloc", "libc.so."},
	{"malloc_usable_size", "libc.so."},
	{"_Znwm", "libstdc++.so."},                 // new
	{"_Znam", "libstdc++.so."},                 // new[]
	{"_ZnwmSt11align_val_t", "libstdc++.so."},  // new, aligned
	{"_ZnwmRKSt9nothrow_t", "libstdc++.so."},   // new, nothrow
	{"_ZdlPv", "libstdc++.so."},                // delete
	{"_ZdlPvm", "libstdc++.so."},               // delete, sized
	{"_ZdaPv", "libstdc++.so."},                // delete[]
	{"_ZdlPvSt11align_val_t", "libstdc++.so."}, // delete, aligned
};

void expect_own_images(void* scope) {
	for (const Heap_function& function : heap_functions) {
		SCOPED_TRACE(function.name);
		const void* const address = dlsym(scope, function.name);
		ASSERT_NE(address, nullptr);
		EXPECT_EQ(image_of(address).rfind(function.image, 0), 0u) << image_of(address);
	}
}

} // namespace

TEST(ProcessHeap, FunctionsOfTheProgramAreTheRuntimes) { expect_own_images(RTLD_DEFAULT); }

TEST(ProcessHeap, FunctionsThatTheLibrarySeesAreTheRuntimes) {
	Dl_info info{};
	ASSERT_NE(dladdr(reinterpret_cast<const void*>(&xyl_heap_free), &info), 0);
	ASSERT_EQ(
		image_of(reinterpret_cast<const void*>(&xyl_heap_free)).rfind("libMorvantis.Library", 0),
		0u);
	void* const library = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
	ASSERT_NE(library, nullptr);
	expect_own_images(library);
	dlclose(library);
}
