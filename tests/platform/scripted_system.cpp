#include "scripted_system.h"

#include <morvantis/core/legacy_format.h>
#include <morvantis/core/xylreport.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/platform/system/clock.h>
#include <morvantis/platform/system/module.h>
#include <morvantis/platform/system/process.h>
#include <morvantis/platform/system/shell.h>
#include <morvantis/platform/system/thread.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <utility>

Scripted_system scripted_system;

namespace {

// "operation(1, text)"
template <typename... Arguments> void note(const char* operation, const Arguments&... arguments) {
	std::ostringstream text;
	const char* before = "";
	text << operation << '(';
	((text << std::exchange(before, ", ") << arguments), ...);
	text << ')';
	scripted_system.calls.push_back(text.str());
}

bool answer(const char* operation, const auto&... arguments) {
	note(operation, arguments...);
	return scripted_system.succeeds;
}

template <typename Value> bool give(const std::optional<Value>& value, Value* target) {
	if (value) *target = *value;
	return value.has_value();
}

size_t give_path(char* buffer, size_t size) {
	std::snprintf(buffer, size, "%s", scripted_system.path.c_str());
	return scripted_system.path.size();
}

bool give_name(char* buffer, xylUInt32* size) {
	if (!scripted_system.name_count) return false;
	std::memset(buffer, '#', *size); // no terminator but the caller's own
	std::memcpy(buffer, scripted_system.name.data(),
	            std::min<size_t>(*size, scripted_system.name.size()));
	*size = *scripted_system.name_count;
	return true;
}

MORVANTIS_FORMAT(1, 0) std::string format(const char* format, va_list arguments) {
	char text[1024];
	std::vsnprintf(text, sizeof(text), format, arguments);
	return text;
}

} // namespace

// --- The system
// -----------------------------------------------------------------------------------

xylInt64 os::counter() { return scripted_system.counter; }
bool os::counter_frequency(xylInt64* frequency) {
	return give(scripted_system.frequency, frequency);
}
xylUInt32 os::milliseconds() { return scripted_system.milliseconds; }
void os::sleep(unsigned long milliseconds) { note("sleep", milliseconds); }

os::Page_sizes os::page_sizes() { return scripted_system.page_sizes; }
void* os::take_pages(xylUInt64 size) {
	note("take_pages", size);
	return scripted_system.address;
}
xylUInt64 os::region_size(const void* address) {
	note("region_size", address);
	return 77;
}
bool os::release_pages(void* block) { return answer("release_pages", block); }
bool os::decommit_pages(void* address, xylUInt64 size) {
	return answer("decommit_pages", address, size);
}
bool os::process_memory(Process_memory* usage) {
	return give(scripted_system.process_memory, usage);
}
bool os::physical_memory(Memory_status* status) {
	return give(scripted_system.physical_memory, status);
}

os::Cpuid_registers os::cpuid(xylUInt32 leaf, xylUInt32 subleaf) {
	char text[32];
	std::snprintf(text, sizeof(text), "%X", leaf);
	note("cpuid", text, subleaf);
	const auto found = scripted_system.leaves.find(leaf);
	return found == scripted_system.leaves.end() ? Cpuid_registers{~0u, ~0u, ~0u, ~0u}
	                                             : found->second;
}
xylUInt32 os::processor_count() { return scripted_system.processor_count; }

void* os::current_thread() { return scripted_system.address; }
unsigned long os::thread_id(void* thread) {
	note("thread_id", thread);
	return 5;
}
void os::name_thread(void* thread, const char* name) {
	note("name_thread", thread, name ? std::string("'") + name + "'" : "null");
}
bool os::set_thread_priority(void* thread, int priority) {
	return answer("set_thread_priority", thread, priority);
}
bool os::set_thread_affinity(void* thread, xylUInt64 mask) {
	return answer("set_thread_affinity", thread, mask);
}

void* os::load_module(const char* name) {
	note("load_module", name ? std::string("'") + name + "'" : "null");
	return scripted_system.address;
}
bool os::free_module(void* module) { return answer("free_module", module); }
void* os::module_symbol(void* module, const char* symbol) {
	note("module_symbol", module, symbol);
	return scripted_system.has_symbols ? scripted_system.address : nullptr;
}

xylUInt32 os::current_process_id() { return 0xFFFFFFFE; }
bool os::is_debugger_present() { return scripted_system.succeeds; }
void os::raise_exception(unsigned int code) { note("raise_exception", code); }
bool os::set_environment_variable(const char* name, const char* value) {
	return answer("set_environment_variable", name, value);
}
bool os::computer_name(char* buffer, xylUInt32* size) {
	note("computer_name", *size);
	return give_name(buffer, size);
}
bool os::user_name(char* buffer, xylUInt32* size) {
	note("user_name", *size);
	return give_name(buffer, size);
}
size_t os::current_folder(char* buffer, size_t size) {
	note("current_folder", size);
	if (scripted_system.current_folder.empty()) return 0;
	std::memcpy(buffer, scripted_system.current_folder.c_str(),
	            scripted_system.current_folder.size() + 1);
	return scripted_system.current_folder.size();
}
int os::start_process(char* command_line, xylUInt32 creation_flags, const char* environment,
                      const char* folder, Child_process* child) {
	std::string block = "null";
	if (environment) {
		block = std::string("'") + environment + "'";
		if (environment[std::strlen(environment) + 1] != 0) block += " without an end";
	}
	note("start_process", std::string("'") + command_line + "'", creation_flags, block, folder);
	child->id = scripted_system.child_id;
	return scripted_system.start_result;
}
void os::wait_for_process(const Child_process& child) { note("wait_for_process", child.id); }
void os::shell_execute(const char* operation, const char* file) {
	note("shell_execute", operation ? operation : "null", file ? file : "null");
}
void os::open_folder_and_select(const char* folder, const char* item) {
	note("open_folder_and_select", folder, item);
}

void os::create_guid(unsigned char bytes[16]) {
	for (int i = 0; scripted_system.succeeds && i < 16; ++i) {
		bytes[i] = static_cast<unsigned char>(i);
	}
}

size_t os::temporary_folder(char* buffer, size_t size) {
	note("temporary_folder", size);
	return give_path(buffer, size);
}
size_t os::executable_path(char* buffer, size_t size) {
	note("executable_path", size);
	return give_path(buffer, size);
}
size_t os::absolute_path(const char* path, char* buffer, size_t size) {
	note("absolute_path", path, size);
	return give_path(buffer, size);
}
const char* os::file_name(const char* path) {
	const char* last = std::strrchr(path, scripted_system.separator);
	return last ? last + 1 : path;
}
os::Path_kind os::path_kind(const char* path) {
	note("path_kind", path);
	const auto found = scripted_system.path_kinds.find(path);
	return found == scripted_system.path_kinds.end() ? scripted_system.path_kind : found->second;
}
bool os::modification_time(const char* path, xylInt64* seconds) {
	note("modification_time", path);
	return give(scripted_system.modification_time, seconds);
}
bool os::create_folder(const char* path) { return answer("create_folder", path); }
bool os::delete_tree(const char* path) {
	// The list of paths that the system takes ends in an empty one.
	return answer("delete_tree", path, path[std::strlen(path) + 1] == 0 ? "" : "no second zero");
}

// --- The host and the heap
// ------------------------------------------------------------------------

void xyl_error(const char* text, ...) {
	scripted_system.reports.push_back("error: " + std::string(text));
}
void xyl_warning(const char* text, ...) {
	va_list arguments;
	va_start(arguments, text);
	scripted_system.reports.push_back("warning: " + format(text, arguments));
	va_end(arguments);
}
void xyl_warning_with_system_error(char* text, ...) {
	scripted_system.reports.push_back("warning with system error: " + std::string(text));
}
void xyl_output_debug_string(const char* text) {
	scripted_system.reports.push_back("debug output: " + std::string(text));
}
int xyl_snprintf(char* buffer, size_t size, const char* text, ...) {
	va_list arguments;
	va_start(arguments, text);
	const int count = format_bounded(buffer, size, text, arguments);
	va_end(arguments);
	if (count < 0 && size > 0) buffer[size - 1] = 0;
	return count;
}

// Blocks with their size in front.
constexpr size_t size_bytes = 16;

void* xyl_heap_allocate(size_t size) {
	if (size == 0) return nullptr;
	++scripted_system.allocations;
	char* block = static_cast<char*>(std::malloc(size_bytes + size));
	std::memcpy(block, &size, sizeof(size));
	return block + size_bytes;
}

void xyl_heap_free(void* memory) {
	if (memory) std::free(static_cast<char*>(memory) - size_bytes);
}

size_t xyl_heap_usable_size(const void* memory) {
	size_t size = 0;
	if (memory) std::memcpy(&size, static_cast<const char*>(memory) - size_bytes, sizeof(size));
	return size;
}
