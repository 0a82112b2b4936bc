#include <morvantis/platform/system/module.h>

#include <morvantis/platform/system/windows/include_windows.h>

void* os::load_module(const char* name) { return LoadLibraryA(name); }

bool os::free_module(void* module) { return FreeLibrary(static_cast<HMODULE>(module)) != 0; }

void* os::module_symbol(void* module, const char* symbol) {
	return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), symbol));
}
