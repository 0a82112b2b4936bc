// The platform's crash dump. It stands here and not with the rest of zubPlatform because it shares
// the symbol engine's lock.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/platform/system/dump.h>

#include <cstring>
#include <mutex> // std::unique_lock

namespace {

static_assert(sizeof(zubException_pointers) == sizeof(os::Exception_pointers) &&
              offsetof(zubException_pointers, context) ==
                  offsetof(os::Exception_pointers, context));

constexpr unsigned int raised_code = 0xDEADFACE; // of the exception that stands in for a crash
constexpr char dump_name[] = "/dump.dmp";
constexpr size_t path_size = 1024;

// The heap may be damaged: the path is put together on the stack. A longer one ends the attempt.
bool make_path(const xylVarString& folder, char (&path)[path_size]) {
	const size_t length = std::strlen(folder.char_p());
	if (length > sizeof(path) - sizeof(dump_name)) return false;
	std::memcpy(path, folder.char_p(), length);
	std::memcpy(path + length, dump_name, sizeof(dump_name));
	return true;
}

// The symbol engine's lock, which no other user of the system's debug facilities may hold
// meanwhile. A host without the engine has nobody to be kept out.
std::unique_lock<xylMutex> lock_engine() {
	return zub_debughelp_interface ? std::unique_lock(zub_debughelp_interface->lock)
	                               : std::unique_lock<xylMutex>();
}

void write_dump(void* exception_pointers, const xylVarString& folder) {
	char path[path_size];
	os::Dump dump;
	if (!make_path(folder, path) || !os::open_dump(path, &dump)) return;
	{
		const std::unique_lock<xylMutex> lock = lock_engine();
		os::write_dump(dump, exception_pointers);
	}
	os::close_dump(dump);
}

void write_dump_of_raised(void* exception_pointers, void* folder) {
	write_dump(exception_pointers, *static_cast<const xylVarString*>(folder));
}

} // namespace

bool zubPlatform::write_minidump(const xylVarString& folder, void* exception_pointers) {
	if (exception_pointers) {
		write_dump(exception_pointers, folder);
	} else {
		os::catch_exception(raised_code, raise_exception, write_dump_of_raised,
		                    const_cast<xylVarString*>(&folder)); // only read
	}
	return false; // kept: written or not
}
