// Names of folders and files, and the folders themselves.
#pragma once

#include <morvantis/core/xyltypes.h> // size_t

namespace os {

// Paths are terminated narrow strings in the system's own form; relative ones start at the current
// folder of the process. Any thread may call all of these.

// The three below write at most `size` bytes, terminator included.
//
// Result  the length of the text without terminator; 0 on failure; `size` or more when the text
//         does not fit, with `buffer` then undefined but terminated within `size`.
// None allocates.

// The folder for temporary files, with a separator at its end.
size_t temporary_folder(char* buffer, size_t size);

// The running program's own file.
size_t executable_path(char* buffer, size_t size);

// `path` seen from the current folder, with "." and ".." taken out by their names alone; nothing
// needs to exist. A separator at the end stays. An empty path fails.
size_t absolute_path(const char* path, char* buffer, size_t size);

// What stands behind the system's last separator: the name itself when there is none, empty when
// the path ends in one. Points into `path`.
const char* file_name(const char* path);

enum class Path_kind { missing, file, folder };

// `missing` as well when the system won't say. What is there and is no folder is a file.
Path_kind path_kind(const char* path);

// Seconds since 1970 of the last change of a file's or folder's contents.
//
// Result  false, with `*seconds` untouched, when there is none or the system won't say.
bool modification_time(const char* path, xylInt64* seconds);

// Makes one folder. False when it exists already, or the folder above it doesn't.
bool create_folder(const char* path);

// Deletes a folder and all it holds, read-only files included, for good and without asking. A link
// within it goes, and what it leads to stays.
//
// `path`  ends in two zero bytes.
// Result  false when the folder doesn't exist or something in it stays.
bool delete_tree(const char* path);

} // namespace os
