#include <morvantis/platform/system/memory.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <psapi.h> // PROCESS_MEMORY_COUNTERS

static_assert(sizeof(PROCESS_MEMORY_COUNTERS) == 72 && sizeof(MEMORYSTATUSEX) == 64);

os::Page_sizes os::page_sizes() {
	SYSTEM_INFO info{};
	GetSystemInfo(&info);
	return {info.dwPageSize, info.dwAllocationGranularity};
}

void* os::take_pages(xylUInt64 size) {
	return VirtualAlloc(nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
}

xylUInt64 os::region_size(const void* address) {
	MEMORY_BASIC_INFORMATION region{};
	if (VirtualQuery(address, &region, sizeof(region)) == 0) return 0;
	return region.RegionSize;
}

bool os::release_pages(void* block) { return VirtualFree(block, 0, MEM_RELEASE) != 0; }

bool os::decommit_pages(void* address, xylUInt64 size) {
	return VirtualFree(address, size, MEM_DECOMMIT) != 0;
}

bool os::process_memory(Process_memory* usage) {
	PROCESS_MEMORY_COUNTERS counters{};
	if (!K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters))) return false;
	*usage = {counters.WorkingSetSize, counters.PagefileUsage};
	return true;
}

bool os::physical_memory(Memory_status* status) {
	MEMORYSTATUSEX answer{};
	answer.dwLength = sizeof(answer);
	if (!GlobalMemoryStatusEx(&answer)) return false;
	*status = {answer.ullAvailPhys, answer.ullTotalPhys};
	return true;
}
