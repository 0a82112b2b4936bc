// The running process and its threads.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/platform/system/clock.h>
#include <morvantis/platform/system/process.h>
#include <morvantis/platform/system/thread.h>
#include <morvantis/strings/xylvarstring.h>

bool zubPlatform::is_debugger_present() { return os::is_debugger_present(); }

xylUInt32 zubPlatform::get_current_process_id() { return os::current_process_id(); }

void* zubPlatform::get_current_native_thread_handle() { return os::current_thread(); }

unsigned long zubPlatform::get_native_thread_id(void* handle) { return os::thread_id(handle); }

void zubPlatform::set_thread_name(void* handle, const xylVarString& name) {
	os::name_thread(handle, name.char_p());
}

void zubPlatform::set_thread_priority(void* handle, xylThread_priority p) {
	// kept: a fourth entry, so that the value 3, which has no name, is normal priority.
	static constexpr int system_priorities[4] = {-2, 0, 2, 0};
	os::set_thread_priority(handle, system_priorities[p]);
}

void zubPlatform::set_thread_affinity(void* handle, xylUInt64 mask) {
	os::set_thread_affinity(handle, mask);
}

void zubPlatform::raise_exception(unsigned int code) {
	os::raise_exception(code);
	// A handler let it come back: leave time for whoever is about to end the process.
	os::sleep(1000);
}
