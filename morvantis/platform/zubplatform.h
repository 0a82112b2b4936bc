// What the library asks of the operating system, apart from files.
#pragma once

#include <morvantis/core/xyltypes.h>
#include <morvantis/strings/xylconststring.h>

class xylVarString;
struct xylGuid_type;

// The processor, as it describes itself.
struct MORVANTIS_API xylCPU_description {
	xylConstString<128> brand_name; // empty where the processor doesn't tell
	xylUInt32 processor_count = 0;  // logical processors in use
	bool has_sse3 = false;
	bool has_ssse3 = false;
	bool has_sse4_1 = false;
	bool has_sse4_2 = false;
	bool has_avx = false;
	bool has_avx2 = false;
};

enum xylThread_priority {
	xylThread_priority_low = 0, // below the system's normal one
	xylThread_priority_normal = 1,
	xylThread_priority_high = 2, // above it; the system may refuse
};

// What a handler of crashes hands on: an exception as the system describes it.
//
// On Windows the system's own EXCEPTION_POINTERS has this shape and is what write_minidump() takes;
// on Linux a handler of a signal fills one in from its second and third argument.
struct zubException_pointers {
	void* record;  // EXCEPTION_RECORD*, or siginfo_t*
	void* context; // CONTEXT*, or ucontext_t*
};

// Thin wrappers of the operating system: clocks, threads, memory, identity, paths and folders.
//
// Every operation is static; the global pointer zub_platform leads to an object for callers that
// prefer one. Each asks one facility of the system, named per system in docs/porting.md.
//
// Threads: all operations may be called from any thread; the exceptions say so.
// Allocation: none allocates from the library's heap, except where text goes into a xylVarString.
// Failure: a neutral result, and nothing is reported, except where an operation says so.
class MORVANTIS_API zubPlatform {
public:
	// --- Time ---------------------------------------------------------------------------------

	// Waits for at least `ms` milliseconds; 0 only lets other ready threads run.
	static void sleep(unsigned long ms);
	// The finest steadily running counter; only differences have a meaning.
	static xylInt64 get_timestamp_counter();
	// Units of get_timestamp_counter() in a second. A system without such a counter is reported
	// with xyl_error(); should the host let that return, the result is 0.
	static xylInt64 get_timestamp_counter_frequency();
	// Milliseconds of a steadily running clock: 0 to 4,294,967,295, then again from 0 (49.7 days).
	static xylInt64 get_system_time();

	// --- Process and threads ------------------------------------------------------------------

	static bool is_debugger_present();
	static xylUInt32 get_current_process_id();
	// The calling thread. On Windows a pseudo handle that means its user's own thread wherever it
	// is used, so it must not be handed to another thread as an identity.
	static void* get_current_native_thread_handle();
	// The system's number of a thread; 0 on failure. On Linux it is known for the calling thread's
	// handle only.
	static unsigned long get_native_thread_id(void* handle);
	// Tells debuggers the name of a thread; Linux keeps its first 15 bytes. A name without storage
	// counts as the empty one. Safe with and without a debugger.
	static void set_thread_name(void* handle, const xylVarString& name);
	// A refusal of the system is not noticed. `p` is not range-checked; kept: 3 means normal.
	static void set_thread_priority(void* handle, xylThread_priority p);
	// Bit n of `mask` allows processor n. A refusal of the system is not noticed.
	static void set_thread_affinity(void* handle, xylUInt64 mask);
	// Raises a system exception with `code` and no arguments; on Linux a SIGTRAP, without the code.
	// Should a handler let it come back, the caller goes on a second later.
	static void raise_exception(unsigned int code);

	// --- Memory figures -----------------------------------------------------------------------

	// Bytes of the process in physical memory; 0 on failure.
	static xylUInt64 get_application_memory();
	// Bytes of private memory that the system has promised to the process; 0 on failure.
	static xylUInt64 get_application_commit_memory();
	// Physical memory that could be given out now: 0 to 100 percent; -1.0 on failure.
	static float get_available_memory_percentage();
	// Asks the processor on every call.
	static xylCPU_description get_cpu_description();

	// --- Page memory --------------------------------------------------------------------------

	// The larger of the system's page size and the granularity of block addresses, in bytes.
	static xylUInt64 page_size_internal(); // asks the system on every call
	static xylUInt64 page_size();          // asks once; kept as 32 bits with a sign
	// Takes zeroed, readable and writable pages. kept: the last three arguments are ignored.
	//
	// `size`  bytes, rounded up to whole pages by the system.
	// Result  the caller's until deallocate_memory(); null for size 0 and when the system refuses.
	static void* allocate_memory(xylUInt64 size, xylUInt64, bool, bool);
	// Bytes from the page that holds `p` to the end of its run of equally committed pages; 0 on
	// failure, which on Linux includes every address that isn't from allocate_memory().
	static xylUInt64 allocation_size(void* p);
	// Gives a whole block back. kept: the size is ignored.
	//
	// Result  false when the system refuses, as for anything but the start of a live block.
	static bool deallocate_memory(void* p, xylUInt64);
	// Drops the contents of the pages that [p, p + size) touches; they must not be used again
	// before the block is given back. kept: the third argument is ignored.
	static bool decommit_memory(void* p, xylUInt64 size, xylUInt64);
	// Not available on these systems: null and false. The first call of each says so on the debug
	// output.
	static void* allocate_direct_memory(xylUInt64, xylUInt64, bool, bool);
	static bool deallocate_direct_memory(void*);

	// --- Identity and dynamic code ------------------------------------------------------------

	// A new, unique value. A failure is not noticed and leaves `*out` as it was.
	static void create_guid(xylGuid_type* out);
	// Loads a dynamic library by the system's own search.
	//
	// Result  the caller's until free_library(); null on failure, as for an empty name.
	static void* load_library(const xylVarString& name);
	static bool free_library(void* module);
	// The address of an exported symbol; null when there is none. A null module has none on Linux;
	// on Windows it stands for the running program's own image.
	static void* get_process_address(void* module, xylVarString& symbol);
	// Sets a variable of the process's environment; false when the system refuses, as for an empty
	// name. On Linux no other thread may use the environment meanwhile.
	static bool set_environment_variable(const xylVarString& name, const xylVarString& value);
	// The machine's name, at most 15 characters.
	//
	// Result  false on failure, with `out` untouched and a warning "Cannot Get Computer Name: " and
	//         the system's text.
	static bool get_computer_name(xylVarString& out);
	// The name of the user whom the process runs as; on failure as above, with a warning "Cannot
	// Get User Name: ". A name of 256 characters ends the process; a longer one is a failure.
	static bool get_os_user_name(xylVarString& out);

	// --- Paths --------------------------------------------------------------------------------
	//
	// A base-relative path begins with "$BASE/", which stands for the folder two above the current
	// one. A final path is what the system takes. Comparisons are exact, and no conversion looks at
	// the disk. A result that doesn't fit its type ends the process, unless said otherwise.

	static xylConstString<16> get_base_path_prefix(); // "$BASE/"
	static const char* get_platform_base();           // "../../", static text
	// The system's folder for temporary files as the system writes it, with a separator at its end.
	static xylConstString<256> get_temp_path();
	// The folder of the running program, ending in "/"; the separators inside are the system's.
	// Empty when the system won't say.
	static xylConstString<256> get_executable_path();
	// Puts "../../" for "$BASE/"; a path without the prefix comes back unchanged.
	//
	// kept: the prefix is looked for anywhere, and wherever it stands it is the first six
	// characters that give way: "x/$BASE/a.txt" becomes "../../E/a.txt". `path`  at most 279
	// characters; longer ones are outside the contract.
	static xylConstString<512> convert_base_path_to_final(const xylString_base& path);
	// The final path seen from the current folder, with forward slashes only. A result of 256
	// characters or more gives an empty string and a warning; a final path of as many ends the
	// process.
	// Threads: no other may change the current folder meanwhile.
	static xylConstString<256> convert_base_path_to_absolute_path(const xylString_base& path);
	// Puts "$BASE/" for the first "../../", wherever it stands.
	//
	// kept: of what follows, only the first six characters stay, so "../../data/textures/a.tga"
	// becomes "$BASE/data/t". The length counts six even where fewer follow ("../../ab" becomes
	// "$BASE/ab" with length 12), and what stands behind the last of them is not specified. A
	// length of 256 or more ends the process.
	static xylConstString<256> convert_final_to_base_path(const xylString_base& path);
	// True when the path begins with "$BASE/".
	static bool is_base_relative(const xylVarString& path);
	// Turns an absolute path with forward slashes into a base-relative one: what stands behind the
	// first "/NERU/", or without one behind the first "/Wolmes/", follows "$BASE/". Empty when the
	// path has neither; a base-relative path comes back unchanged.
	//
	// A tail that would make 127 characters or more of it is dropped; one of 128 or more ends the
	// process.
	static xylVarString get_base_relative_path(const xylVarString& path);

	// --- Folders and files --------------------------------------------------------------------
	//
	// Paths may be base-relative, except for the last operation's. On failure the reason is left in
	// the system's last error.

	// Makes one folder. False when it exists already, or the folder above it doesn't.
	static bool create_directory(const xylString_base& path);
	// Deletes a folder and all it holds, for good. Links within it go, what they lead to stays.
	//
	// `path`  a final path of at most 278 characters; a longer one ends the process. On Windows it
	//         is looked for below the current folder if it begins with a slash.
	// Result  false when the folder doesn't exist or something in it could not be deleted.
	static bool remove_directory(const xylString_base& path);
	static bool is_directory_exists(const xylString_base& path);
	static bool file_exists(const xylString_base& path); // false for a folder
	// Seconds since 1970 of the last change; -1 if there is no such file.
	// kept: the path is taken as it stands, so "$BASE/x" is not found.
	static xylInt64 get_file_last_modification_date(const xylString_base& path);

	// --- Other processes and the desktop ------------------------------------------------------

	// Starts a program, in the current folder of this process.
	//
	// `process_id`      gets the system's number of the new process, 0 on failure.
	// `path`            kept: not looked at; `arguments[0]` is the program.
	// `arguments`       up to a null entry. kept: no quotes are added, so an argument with a blank
	//                   comes with double quotes of its own, and the command line ends in a blank.
	//                   Null starts nothing.
	// `environment`     up to a null entry; null hands on this process's own. kept: the entries run
	//                   together into one variable.
	// `creation_flags`  as the system defines them (CREATE_SUSPENDED and the like); no effect on
	//                   Linux.
	// `wait`            waits for the end of the process, however long it takes.
	// Result            1; -1 on failure, as when the program isn't found, or when arguments or
	//                   environment have 1,024 characters or more in all. The exit code isn't told.
	//
	// kept: the handles of process and thread stay open on Windows. On Linux a process that isn't
	// waited for stays in the system's list until the host collects it by its number or ends.
	static int create_process(unsigned int& process_id, const char* path, char* const* arguments,
	                          char* const* environment, unsigned int creation_flags, bool wait);
	// Lets the user's desktop do something with a file, folder or address, and doesn't wait. What
	// comes of it isn't told; without a desktop, nothing.
	//
	// `operation`  "open", "edit", "print" and so on; null for the desktop's default. Linux only
	//              opens.
	// `file`       as it stands: no base-relative path.
	static void shell_execute(const char* operation, const char* file);
	// Opens a file with the program that the user's desktop has for it; nothing when there is no
	// such file. The path may be base-relative.
	static void open_with_default_app(const xylString_base& path);
	// Shows a folder in the desktop with one item selected; Linux selects none. Both paths may be
	// base-relative, and the item's is not relative to the folder.
	static void open_folder_and_select_items(const xylVarString& folder, const xylVarString& item);

	// --- Crash dumps --------------------------------------------------------------------------

	// Writes the file "dump.dmp" into a folder: a minidump of this process, which debuggers of
	// either system open. A dump that is there already is replaced. docs/crash_dumps.md shows a
	// host's handlers.
	//
	// `folder`              a final path of at most 1,014 characters, as the system takes it.
	// `exception_pointers`  a zubException_pointers of the calling thread. Null for a dump of a
	//                       process that goes on: an exception with the code 0xDEADFACE (SIGTRAP on
	//                       Linux) is raised for it and caught again, and no handler of the host
	//                       sees it.
	// Result                kept: always false, with a dump or without one. A failure, such as a
	//                       missing folder, is silent; on Windows one handle then stays open.
	//
	// Threads: any, one dump at a time by the lock of zub_debughelp_interface, which the calling
	// thread must not hold; where that is null the caller sees to it. Linux stops all other threads
	// meanwhile, and calls of the system they were in may end with EINTR.
	// Allocation: none on Linux, where a handler of a signal may call it, on a stack of its own of
	// 64 KiB; the folder's string is made in good time.
	static bool write_minidump(const xylVarString& folder, void* exception_pointers);
};

// An object to call the operations on; there from before the first static initialiser.
extern MORVANTIS_API zubPlatform* zub_platform;
