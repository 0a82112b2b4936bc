// Stacks as bare addresses, and their text from the system's symbol engine.

#include <morvantis/diagnostics/zubcallstack.h>

#include <morvantis/core/xylreport.h> // xyl_snprintf
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/platform/system/back_trace.h>
#include <morvantis/platform/system/error.h> // debug_output, last_error
#include <morvantis/platform/system/symbols.h>

namespace {

constexpr char failure_format[] = "ERROR: %s, GetLastError: %d (Address: %p)\n";
constexpr char module_question[] = "SymGetModuleInfo64";
constexpr char name_question[] = "SymGetSymFromAddr64";
constexpr char line_question[] = "SymGetLineFromAddr64";

constexpr char with_line_format[] = "%s (%d): %s\n";
constexpr char without_line_format[] = "%p (%s): %s: %s\n";
constexpr char no_function_text[] = "(function-name not available)";
constexpr char no_file_text[] = "(filename not available)";
constexpr char no_module_text[] = "(module-name not available)";

constexpr size_t entry_size = 4096; // of a text, terminator included

const void* as_pointer(xylUInt64 address) {
	return reinterpret_cast<const void*>(static_cast<size_t>(address));
}

void note_failure(const char* question, xylUInt64 address) {
	const auto error = static_cast<int>(os::last_error());
	char text[entry_size];
	xyl_snprintf(text, sizeof(text), failure_format, question, error, as_pointer(address));
	os::debug_output(text);
}

// What the engine knows of one address. The texts are empty where it knows nothing.
struct Counter_entry {
	os::Engine_module module;
	os::Engine_name name;
	os::Engine_line line;
};

void ask_engine(xylUInt64 address, void* record, Counter_entry& entry) {
	void* const process = zubDebughelp_interface::dummy_process;
	entry.module.image[0] = entry.module.loaded_image[0] = 0;
	entry.name.decorated = "";
	entry.name.plain[0] = entry.name.complete[0] = 0;
	entry.line = {"", 0};
	if (!os::engine_module(process, address, entry.module)) note_failure(module_question, address);
	if (!os::engine_name(process, address, record, entry.name)) {
		note_failure(name_question, address);
	}
	if (!os::engine_line(process, address, entry.line)) note_failure(line_question, address);
}

const char* or_else(const char* text, const char* otherwise) { return text[0] ? text : otherwise; }

void append_entry(xylUInt64 address, const Counter_entry& entry, std::string& out) {
	const char* const plain = or_else(entry.name.plain, entry.name.decorated);
	const char* const name = or_else(or_else(entry.name.complete, plain), no_function_text);
	char text[entry_size];
	if (entry.line.file[0]) {
		xyl_snprintf(text, sizeof(text), with_line_format, entry.line.file, entry.line.line, name);
	} else {
		xyl_snprintf(text, sizeof(text), without_line_format, as_pointer(address),
		             or_else(entry.module.image, no_module_text), no_file_text, name);
	}
	text[entry_size - 1] = 0; // a text of exactly that size comes without
	os::debug_output(text);
	out += text;
}

} // namespace

bool zubCallstack::capture_counters(unsigned long long* addresses, unsigned long long* hash,
                                    unsigned int max_count, unsigned int skip_count) {
	const unsigned int count = os::back_trace(skip_count, max_count - 1, addresses, hash);
	addresses[count] = 0;
	return count != 0;
}

bool zubCallstack::resolve_counters(unsigned long long* addresses, int count, std::string& out) {
	if (!zub_debughelp_interface->is_initialized) return false;
	out.clear();
	// kept: nothing gives the record back.
	void* const record = os::allocate_engine_record();
	if (!record) return false;
	Counter_entry entry;
	for (int i = 0; i < count && addresses[i] != 0; ++i) {
		ask_engine(addresses[i], record, entry);
		append_entry(addresses[i], entry, out);
	}
	return true;
}
