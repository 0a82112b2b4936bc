#include <morvantis/platform/system/module.h>

#include <dlfcn.h>

// An empty name would give a handle of the program itself.
void* os::load_module(const char* name) { return name[0] ? dlopen(name, RTLD_NOW) : nullptr; }

bool os::free_module(void* module) { return module && dlclose(module) == 0; }

// A null handle would search every image of the process.
void* os::module_symbol(void* module, const char* symbol) {
	return module ? dlsym(module, symbol) : nullptr;
}
