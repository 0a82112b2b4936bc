// What a host does about its crashes: the same words for both systems.
#pragma once

// Makes each crash of the process write its dump and its raw stack into `folder` and end the
// process with 3. To be called on each thread, for the room its handler needs.
void install_crash_handler(const char* folder);
// Writes a dump without a crash into that folder.
void write_dump_in_passing();

// Ends the calling thread, the first one of the process, and calls `then` in another when it is
// gone.
[[noreturn]] void end_first_thread(void (*then)());

// Writes the raw stack of a thread's registers, null for the calling one's, as "stack.txt" into
// that folder.
void write_raw_stack(void* context, const char* folder);
