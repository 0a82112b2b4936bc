// The desktop shell: programs for files, windows of folders.
#pragma once

namespace os {

// Both hand a request to the desktop and don't wait for what comes of it; whether anything does
// isn't told. Any thread may call them; on some systems its COM apartment must be set up.

// Opens a file, or does something else with it, by the program that the user's desktop has for it.
//
// `operation`  a verb of the desktop such as "open" or "print"; null for its default. Where the
//              desktop knows only opening, it is that.
// `file`       a file, folder or address; null where the operation needs none, and then nothing
//              may come of it.
void shell_execute(const char* operation, const char* file);

// Shows a folder in a window of the desktop with one of its items selected; where the desktop can't
// select, only the folder.
//
// `folder`, `item`  absolute paths in the system's own form.
void open_folder_and_select(const char* folder, const char* item);

} // namespace os
