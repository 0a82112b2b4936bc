#include <morvantis/diagnostics/zubraw_callstack.h>

#include <morvantis/core/xylguid_generator.h>
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/platform/system/unwind.h>
#include <morvantis/strings/xylconststring.h>

#include <iterator> // size

static constexpr char no_frames_text[] = "No native frames available";
static constexpr char unresolvable_format[] = "%s \n";
static constexpr char unresolvable_text[] = "[unresolvable frame]";
// kept: %X takes the low 32 bits of base and offset, in 16 digits.
static constexpr char frame_format[] = "0x%016X 0x%016X %s %d "; // then the file name and the end
static constexpr char frame_end[] = "\n";

void zubRaw_callstack::capture(void* context, unsigned int skip_count) {
	stack.clear();
	os::Unwind_step steps[zubCallstack_helpers::callstack_max_depth];
	const unsigned int count = context ? os::walk_context(context, steps, std::size(steps))
	                                   : os::walk_callers(steps, std::size(steps));
	if (skip_count >= count) return;
	// All at once, with the room that one after the other would have come to.
	size_t capacity = stack.capacity();
	while (capacity < count - skip_count) capacity = capacity > 0 ? 2 * capacity : 1;
	stack.reserve(capacity);
	stack.resize(count - skip_count);
	zubCallstack_frame* frame = stack.data();
	for (unsigned int i = skip_count; i < count; ++i) {
		*frame++ = {steps[i].base, steps[i].pc - steps[i].base};
	}
}

xylVarString zubRaw_callstack::get_stack_str() const {
	xylVarString text;
	if (stack.empty()) {
		text = no_frames_text;
		return text;
	}
	zubCallstack_helpers::enumerate_modules(nullptr);
	for (const zubCallstack_frame& frame : stack) get_frame_str(frame, text);
	return text;
}

void zubRaw_callstack::get_frame_str(const zubCallstack_frame& frame, xylVarString& out) {
	// kept: the line of no image follows all the same.
	zubCallstack_module module;
	if (!zubCallstack_helpers::get_module_info(frame.module_base, module)) {
		out.append_formatted(unresolvable_format, unresolvable_text);
	}
	xylArray<char> name(static_cast<size_t>(module.path.length()) + 1); // room for all of the path
	zubCallstack_helpers::get_file_name_from_path(module.path, name.data());
	xylConstString<64> guid;
	xylGuid_generator::guid_to_string(module.pdb_guid, guid, true, false);
	out.append_formatted(frame_format, static_cast<xylUInt32>(frame.module_base),
	                     static_cast<xylUInt32>(frame.module_offset), guid.char_p(),
	                     module.pdb_age);
	// Behind the formatted text, which is bounded: a path without a backslash may be longer.
	out.append(name.data());
	out.append(frame_end);
}
