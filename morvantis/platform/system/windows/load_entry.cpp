// The library's load entry.

#include <morvantis/platform/system/windows/include_windows.h>

// No thread of the host has to stop by on its way in or out: the library keeps nothing per thread
// that such a notice would end.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
	if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
	return TRUE;
}
