#include <morvantis/diagnostics/zubdebughelp_interface.h>

#include <morvantis/platform/system/module.h>
#include <morvantis/platform/system/process.h>
#include <morvantis/platform/system/symbols.h>

#include <atomic>
#include <mutex> // lock_guard

static_assert(offsetof(zubDebughelp_interface, is_initialized) == 0);
static_assert(offsetof(zubDebughelp_interface, lock) >= 1 &&
              offsetof(zubDebughelp_interface, dia_module) >=
                  offsetof(zubDebughelp_interface, lock) + sizeof(xylMutex) &&
              offsetof(zubDebughelp_interface, dll_get_class_object) ==
                  offsetof(zubDebughelp_interface, dia_module) + sizeof(void*));

zubDebughelp_interface* zub_debughelp_interface = nullptr;

namespace {

// Options of the debug help library: names without regard to case (1) and undecorated (2), symbols
// loaded when first needed (4), lines too (0x10), images of 32 bits among the others (0x2000).
constexpr xylUInt32 engine_options = 0x2017;

constexpr char reader_entry[] = "DllGetClassObject";

// Where the studio's symbol files are shared.
constexpr const char* server_shares[] = {"Symbols", "SymbolsCasual", "SymbolsGame",
                                         "SymbolsShipping", "SymbolsSystem"};
constexpr char server_element[] = "SRV";
constexpr char server_cache[] = "\\SymbolCache";
constexpr char server_root[] = "*\\\\" MORVANTIS_SYMBOL_SERVER "\\";
constexpr char console_symbols[] = "xdk\\symbols\\;";

constexpr size_t variable_size = 512; // of a value that is taken, terminator included
constexpr size_t folder_size = 4096;

// The flag is tested outside the lock, so another thread may be setting it.
std::atomic_ref<bool> shared(bool& flag) { return std::atomic_ref<bool>(flag); }

// Loads the reader of symbol files where the engine needs one. What was loaded stays.
bool load_reader(void*& module, void*& entry) {
	const char* const library = os::symbol_reader_library();
	if (!library) return true;
	if (!module) module = os::load_module(library);
	if (!module) return false;
	if (!entry) entry = os::module_symbol(module, reader_entry);
	return entry != nullptr;
}

// Appends `before`, the variable's value and `after`, if it is set.
void append_variable(xylVarString& paths, const char* name, const char* before, const char* after) {
	char value[variable_size];
	if (os::environment_variable(name, value, sizeof(value)) == 0) return;
	paths.append(before);
	paths.append(value);
	paths.append(after);
}

} // namespace

zubDebughelp_interface::~zubDebughelp_interface() { cleanup(); }

bool zubDebughelp_interface::initialize() {
	if (shared(is_initialized).load()) return true;
	const std::lock_guard hold(lock);
	os::set_symbol_options(engine_options);
	const xylVarString paths = get_symbol_search_paths();
	os::set_symbol_search_path(dummy_process, paths.char_p());
	if (!load_reader(dia_module, dll_get_class_object)) return false;
	const bool is_started = os::start_symbol_engine(dummy_process, paths.char_p());
	shared(is_initialized).store(is_started);
	return is_started;
}

void zubDebughelp_interface::cleanup() {
	if (!shared(is_initialized).load()) return;
	const std::lock_guard hold(lock);
	os::stop_symbol_engine(dummy_process);
	shared(is_initialized).store(false);
}

xylVarString zubDebughelp_interface::get_symbol_search_paths() {
	xylVarString paths(".;");
	char folder[folder_size];
	if (os::current_folder(folder, sizeof(folder)) > 0) {
		paths.append(folder);
		paths.append(';');
	}
	append_variable(paths, "_NT_SYMBOL_PATH", "", ";");
	append_variable(paths, "_NT_ALTERNATE_SYMBOL_PATH", "", ";");
	append_variable(paths, "SYSTEMROOT", "", ";");
	append_variable(paths, "DurangoXDK", "", console_symbols);
	paths.append(server_element);
	append_variable(paths, "SYSTEMDRIVE", "*", server_cache);
	for (const char* share : server_shares) {
		paths.append(server_root);
		paths.append(share);
	}
	paths.append(';');
	return paths;
}
