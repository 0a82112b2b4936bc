#include <morvantis/diagnostics/zubcallstack.h>

#include <morvantis/core/xylguid_generator.h>
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/diagnostics/zubraw_callstack.h>
#include <morvantis/platform/system/path.h> // file_name
#include <morvantis/platform/system/symbols.h>
#include <morvantis/strings/xylconststring.h>

#include <atomic>
#include <cstring>
#include <mutex> // lock_guard

namespace {

constexpr char no_frames_text[] = "No native frames available.\n";
constexpr char unknown_module[] = "unknown_module";
constexpr char unknown_source[] = "unknown_source";
constexpr char unknown_line[] = "unknown_line";
constexpr char unknown_function[] = "unknown_function";

// The file name of a path of either system, however long it is.
const char* short_name(const char* path) {
	const char* const name = os::file_name(path);
	const char* const separator = std::strrchr(name, '\\');
	return separator ? separator + 1 : name;
}

os::Symbol_file_identity identity_of(const zubCallstack_module& module) {
	return {module.pdb_name.char_p(), reinterpret_cast<const unsigned char*>(&module.pdb_guid),
	        module.pdb_signature, module.pdb_age, module.path.char_p()};
}

// What the symbol file of exactly this build knows of the place. False when there is no such file
// to be opened, or the engine is off.
bool look_up(const zubCallstack_module& module, xylUInt64 offset, const xylVarString& paths,
             os::Symbol_answer& answer) {
	const os::Symbol_file_identity identity = identity_of(module);
	char file[os::symbol_text_size];
	if (!os::find_symbol_file(paths.char_p(), identity, file)) return false;
	zubDebughelp_interface& engine = *zub_debughelp_interface;
	// Another thread may be starting it.
	return std::atomic_ref<bool>(engine.is_initialized).load() &&
	       os::look_up_symbol(engine.dll_get_class_object, file, identity,
	                          static_cast<xylUInt32>(offset), answer);
}

} // namespace

void zubCallstack::capture(void* context, unsigned int skip_count) {
	zubRaw_callstack raw;
	raw.capture(context, skip_count);
	zubCallstack_helpers::enumerate_modules(nullptr);
	resolve_from_raw(raw);
}

bool zubCallstack::resolve_from_raw(const zubRaw_callstack& raw) {
	stack.clear();
	const std::lock_guard hold(zubCallstack_helpers::dbg_help_lock);
	if (raw.stack.empty()) return false;
	const xylVarString paths = zubDebughelp_interface::get_symbol_search_paths();
	for (const zubCallstack_frame& frame : raw.stack) {
		const auto entry = zubCallstack_helpers::Modules.find(frame.module_base);
		if (entry == zubCallstack_helpers::Modules.end()) {
			format_and_push_frame_str(unknown_module, unknown_source, unknown_line,
			                          unknown_function);
			continue;
		}
		const zubCallstack_module& module = entry->second;
		os::Symbol_answer answer;
		if (!look_up(module, frame.module_offset, paths, answer)) {
			format_and_push_frame_str(module.pdb_name, module.pdb_guid, module.pdb_age,
			                          frame.module_offset);
			continue;
		}
		xylVarString line = unknown_line;
		if (answer.has_line) {
			line.clear();
			line.append(answer.line);
		}
		format_and_push_frame_str(module.name,
		                          answer.has_source ? short_name(answer.source) : unknown_source,
		                          line, answer.has_function ? answer.function : unknown_function);
	}
	return true;
}

xylVarString zubCallstack::get_stack_str() const {
	if (stack.empty()) return no_frames_text;
	xylVarString text;
	for (const xylVarString& line : stack) {
		text.append(line);
		text.append('\n');
	}
	return text;
}

void zubCallstack::format_and_push_frame_str(const xylVarString& pdb_name, const xylGuid_type& guid,
                                             unsigned int age, unsigned long long offset) {
	xylConstString<64> guid_text;
	xylGuid_generator::guid_to_string(guid, guid_text, true, false);
	xylVarString text("#");
	text.append(short_name(pdb_name.char_p()));
	text.append('@');
	text.append(guid_text);
	text.append(" (");
	text.append(static_cast<long long>(age));
	text.append("): 0:");
	text.append(offset);
	stack.push_back(text);
}

void zubCallstack::format_and_push_frame_str(const xylVarString& module, const xylVarString& source,
                                             const xylVarString& line,
                                             const xylVarString& function) {
	xylVarString text("@");
	text.append(module);
	text.append('@');
	text.append(source);
	text.append(" (");
	text.append(line);
	text.append("): ");
	text.append(function);
	stack.push_back(text);
}
