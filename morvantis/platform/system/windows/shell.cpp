#include <morvantis/platform/system/shell.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <shellapi.h> // ShellExecuteA
#include <shlobj.h>   // ILCreateFromPathA, SHOpenFolderAndSelectItems

void os::shell_execute(const char* operation, const char* file) {
	ShellExecuteA(nullptr, operation, file, nullptr, nullptr, SW_SHOWDEFAULT);
}

void os::open_folder_and_select(const char* folder, const char* item) {
	LPITEMIDLIST folder_id = ILCreateFromPathA(folder);
	LPITEMIDLIST item_id = ILCreateFromPathA(item);
	LPCITEMIDLIST items[] = {item_id};
	SHOpenFolderAndSelectItems(folder_id, 1, items, 0);
	ILFree(item_id);
	ILFree(folder_id);
}
