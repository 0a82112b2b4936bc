// The running process, its surroundings, its machine and its user.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// Any thread may call all of these; none touches the library's heap.

xylUInt32 current_process_id();

// A handle that stands for the calling process wherever one of the system layer's calls takes a
// process; it needs no closing.
void* current_process();

bool is_debugger_present();

// Raises an exception with `code` on the calling thread, without arguments; it comes back only if a
// handler lets it. Where exceptions have no codes, a trap is raised and `code` is lost.
void raise_exception(unsigned int code);

// Sets a variable for this process and its children; an empty value is a value.
//
// Result  false for an empty name or one with "=" in it.
// Threads: where the environment is plain memory of the process, no other thread may read it.
bool set_environment_variable(const char* name, const char* value);

// Writes the value of a variable, at most `size` bytes with its terminator.
//
// Result  the length of the value; 0, with `buffer` unspecified, when it isn't set, is empty or
//         doesn't fit.
size_t environment_variable(const char* name, char* buffer, size_t size);

// The machine's name, at most 15 characters.
//
// `size`  in: bytes at `buffer`; out, on success: characters of the name without its terminator.
// Result  false on failure, with the reason in os::last_error().
bool computer_name(char* buffer, xylUInt32* size);

// The name of the user whom the process runs as.
//
// `size`  in: bytes at `buffer`; out, on success: characters of the name and its terminator.
// Result  false on failure, with the reason in os::last_error().
bool user_name(char* buffer, xylUInt32* size);

// The current folder of the process, in the system's own form, terminated within `size`.
//
// Result  its length; 0 on failure, as when it doesn't fit, with `buffer` then untouched.
size_t current_folder(char* buffer, size_t size);

// A process that was started.
struct Child_process {
	void* process = nullptr; // handle; nobody but the caller closes it
	void* thread = nullptr;  // handle of its first thread, likewise; null where there are none
	xylUInt32 id = 0;
};

// Starts another process, which inherits no open file but the standard ones.
//
// `command_line`    the program and its arguments, parted by blanks; may be written to. How an
//                   argument with a blank is told is the system's convention; double quotes
//                   around it are understood everywhere. The system looks for the program.
// `creation_flags`  as the system defines them; no effect where it defines none.
// `environment`     "name=value" texts, each terminated, with an empty one behind the last; null
//                   for the caller's own.
// `folder`          the current folder of the new process.
// Result            what the system's call answers: 1, or 0 on failure.
int start_process(char* command_line, xylUInt32 creation_flags, const char* environment,
                  const char* folder, Child_process* child);

// Waits until the process has ended, for ever if need be. Where ended processes have to be
// collected, it is collected; one that nobody waits for stays listed until this process ends.
void wait_for_process(const Child_process& child);

// Makes a new GUID, in the byte order of memory. On failure, which isn't told, `bytes` is
// untouched.
void create_guid(unsigned char bytes[16]);

} // namespace os
