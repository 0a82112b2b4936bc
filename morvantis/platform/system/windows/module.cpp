#include <morvantis/platform/system/module.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <tlhelp32.h>

void* os::load_module(const char* name) { return LoadLibraryA(name); }

bool os::free_module(void* module) { return FreeLibrary(static_cast<HMODULE>(module)) != 0; }

void* os::module_symbol(void* module, const char* symbol) {
	return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), symbol));
}

const void* os::module_base(void* module) { return module; }

// GetProcessId() takes no null; a module's handle is no process either and gives 0, which the
// snapshot takes as the calling process.
os::Module_list os::visit_modules(void* process, void (*visit)(const Loaded_module&, void*),
                                  void* data) {
	const DWORD id = GetProcessId(process ? process : GetModuleHandleA(nullptr));
	const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE | TH32CS_SNAPMODULE32, id);
	if (snapshot == INVALID_HANDLE_VALUE) {
		return GetLastError() == ERROR_BAD_LENGTH ? Module_list::changing
		                                          : Module_list::unavailable;
	}
	MODULEENTRY32 entry{};
	entry.dwSize = sizeof(entry);
	static_assert(sizeof(entry) == 568);
	Module32First(snapshot, &entry); // a process has at least one image
	do {
		visit({reinterpret_cast<xylUInt64>(entry.hModule), entry.modBaseAddr, entry.szModule,
		       entry.szExePath},
		      data);
	} while (Module32Next(snapshot, &entry) == TRUE);
	CloseHandle(snapshot);
	return Module_list::complete;
}

size_t os::readable_image_bytes(const void* address) {
	constexpr DWORD readable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
	                           PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
	MEMORY_BASIC_INFORMATION region;
	if (VirtualQuery(address, &region, sizeof(region)) == 0) return 0;
	if (region.Type != MEM_IMAGE || region.State != MEM_COMMIT) return 0;
	if (!(region.Protect & readable) || (region.Protect & PAGE_GUARD)) return 0;
	const auto* begin = static_cast<const char*>(region.BaseAddress);
	return region.RegionSize - static_cast<size_t>(static_cast<const char*>(address) - begin);
}
