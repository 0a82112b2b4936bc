// The connection to the system's symbol engine.
#pragma once

#include <morvantis/core/xylmutex.h>
#include <morvantis/strings/xylvarstring.h>

// Starts and stops the symbol engine. It is off until a host asks for it: raw stacks and the module
// cache work without, and a resolve falls back to the deferred form of its lines.
//
// The host makes the one object, stores its address in zub_debughelp_interface and only then calls
// anything that resolves stacks.
//
// Threads: starting and stopping are guarded by `lock`; a resolve reads `is_initialized` without
// it.
class MORVANTIS_API zubDebughelp_interface {
public:
	zubDebughelp_interface() = default;
	// cleanup()
	~zubDebughelp_interface();
	zubDebughelp_interface(const zubDebughelp_interface&) = delete;
	zubDebughelp_interface& operator=(const zubDebughelp_interface&) = delete;

	// Starts the engine with the images that are loaded now, and the reader of symbol files where
	// the system has one of its own ("msdia140.dll"), which stays loaded for good.
	//
	// Result  whether the engine is on; at once, if it was already. After a failure another call
	//         tries again.
	bool initialize();
	// Stops the engine if it is on. initialize() may follow.
	void cleanup();

	// Where symbol files are looked for, elements separated by ";": the current folder by "." and
	// by its path; the environment's _NT_SYMBOL_PATH, _NT_ALTERNATE_SYMBOL_PATH, SYSTEMROOT and the
	// symbols below DurangoXDK; and the symbol server's shares behind a cache on the system drive.
	// A variable that is empty, or has more than 511 characters, counts as not set.
	static xylVarString get_symbol_search_paths();

	// The calling process as the engine knows it.
	static void* dummy_process;

	bool is_initialized = false;
	xylMutex lock;                        // held while the engine starts, stops or writes a dump
	void* dia_module = nullptr;           // handle of "msdia140.dll"; null where there is none
	void* dll_get_class_object = nullptr; // its entry
};

// The host's; null at load. The library only reads it, and never tests it for null, but for the
// crash dump, which does without its lock then.
extern MORVANTIS_API zubDebughelp_interface* zub_debughelp_interface;
