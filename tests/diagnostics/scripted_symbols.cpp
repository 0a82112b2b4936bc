#include "scripted_symbols.h"

#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/platform/system/back_trace.h>
#include <morvantis/platform/system/error.h>
#include <morvantis/platform/system/process.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

Scripted_symbols scripted_symbols;

// As core/load_order.cpp has them.
xylMutex zubCallstack_helpers::dbg_help_lock;
xylMap<xylUInt64, zubCallstack_module> zubCallstack_helpers::Modules;
void* zubDebughelp_interface::dummy_process = os::current_process();

bool is_free(xylMutex& lock) {
	bool result = false;
	std::thread([&] {
		result = lock.try_lock();
		if (result) lock.unlock();
	}).join();
	return result;
}

Scripted_symbols_test::Scripted_symbols_test() {
	scripted_system = {};
	scripted_symbols = {};
	zub_debughelp_interface = &engine_;
}

Scripted_symbols_test::~Scripted_symbols_test() {
	engine_.is_initialized = false;
	zubCallstack_helpers::clear_module_cache();
	for (void* record : scripted_symbols.records) std::free(record);
	scripted_symbols = {};
	zub_debughelp_interface = nullptr;
}

std::vector<std::string> Scripted_symbols_test::take_calls() {
	return std::exchange(scripted_system.calls, {});
}

namespace {

void note(const std::string& call) {
	scripted_system.calls.push_back(call);
	if (scripted_symbols.on_call) scripted_symbols.on_call(call);
}

template <typename Answer>
bool give(const std::map<xylUInt64, Answer>& answers, xylUInt64 address, Answer& out) {
	const auto found = answers.find(address);
	if (found == answers.end()) return false;
	out = found->second;
	return true;
}

} // namespace

// --- The system

void* os::current_process() { return reinterpret_cast<void*>(size_t{0x50}); }

size_t os::environment_variable(const char* name, char* buffer, size_t size) {
	const auto found = scripted_symbols.environment.find(name);
	if (found == scripted_symbols.environment.end() || found->second.size() >= size) return 0;
	std::memcpy(buffer, found->second.c_str(), found->second.size() + 1);
	return found->second.size();
}

xylUInt32 os::last_error() { return scripted_symbols.last_error; }

void os::debug_output(const char* text) { scripted_system.reports.emplace_back(text); }

const void* os::module_base(void* module) { return module; }

os::Module_list os::visit_modules(void* process, void (*visit)(const Loaded_module&, void*),
                                  void* data) {
	note(process ? "visit_modules(a process)" : "visit_modules(null)");
	auto& lists = scripted_symbols.lists;
	const Module_list result = lists.front();
	if (lists.size() > 1) lists.erase(lists.begin());
	if (result != Module_list::complete) return result;
	for (const Scripted_image& image : scripted_symbols.images) {
		visit({image.key, image.bytes.data(), image.name.c_str(), image.path.c_str()}, data);
	}
	return result;
}

size_t os::readable_image_bytes(const void* address) {
	const auto* place = static_cast<const unsigned char*>(address);
	for (const Scripted_image& image : scripted_symbols.images) {
		const unsigned char* begin = image.bytes.data();
		const std::less<> before;
		if (before(place, begin) || !before(place, begin + image.bytes.size())) continue;
		return image.bytes.size() - static_cast<size_t>(place - begin);
	}
	return 0;
}

const char* os::symbol_reader_library() { return scripted_symbols.reader; }

void os::set_symbol_options(xylUInt32 options) {
	note("set_symbol_options(" + std::to_string(options) + ")");
}

void os::set_symbol_search_path(void* process, const char* paths) {
	EXPECT_EQ(process, os::current_process());
	note("set_symbol_search_path(" + std::string(paths) + ")");
}

bool os::start_symbol_engine(void* process, const char* paths) {
	EXPECT_EQ(process, os::current_process());
	note("start_symbol_engine(" + std::string(paths) + ")");
	return scripted_symbols.engine_starts;
}

void os::stop_symbol_engine(void* process) {
	EXPECT_EQ(process, os::current_process());
	note("stop_symbol_engine");
}

bool os::find_symbol_file(const char* paths, const Symbol_file_identity& identity,
                          char (&found)[symbol_text_size]) {
	note("find(" + std::string(paths) + ", " + identity.name + ", " +
	     std::to_string(identity.guid[0]) + ", " + std::to_string(identity.signature) + ", " +
	     std::to_string(identity.age) + ", " + identity.image_path + ")");
	if (scripted_symbols.on_search) scripted_symbols.on_search();
	const auto file = scripted_symbols.files.find(identity.name);
	if (file == scripted_symbols.files.end()) return false;
	std::strcpy(found, file->second.c_str());
	return true;
}

bool os::look_up_symbol(void* reader, const char* file, const Symbol_file_identity& identity,
                        xylUInt32 offset, Symbol_answer& answer) {
	EXPECT_EQ(reader, zub_debughelp_interface->dll_get_class_object);
	note("look_up(" + std::string(file) + ", " + identity.name + ", " + std::to_string(offset) +
	     ")");
	const auto found = scripted_symbols.answers.find(offset);
	if (found == scripted_symbols.answers.end()) return false;
	answer = found->second;
	return true;
}

bool os::engine_module(void* process, xylUInt64 address, Engine_module& answer) {
	EXPECT_EQ(process, os::current_process());
	return give(scripted_symbols.modules, address, answer);
}

void* os::allocate_engine_record() {
	if (!scripted_symbols.has_memory) return nullptr;
	return scripted_symbols.records.emplace_back(std::malloc(engine_record_size));
}

bool os::engine_name(void* process, xylUInt64 address, void* record, Engine_name& answer) {
	EXPECT_EQ(process, os::current_process());
	EXPECT_EQ(record, scripted_symbols.records.back());
	return give(scripted_symbols.names, address, answer);
}

bool os::engine_line(void* process, xylUInt64 address, Engine_line& answer) {
	EXPECT_EQ(process, os::current_process());
	return give(scripted_symbols.lines, address, answer);
}

unsigned int os::walk_context(void* context, Unwind_step* steps, unsigned int room) {
	note(context ? "walk_context" : "walk_callers");
	const auto& frames = scripted_symbols.frames;
	const auto count = std::min<unsigned int>(room, static_cast<unsigned int>(frames.size()));
	std::copy_n(frames.begin(), count, steps);
	return count;
}

unsigned int os::walk_callers(Unwind_step* steps, unsigned int room) {
	return walk_context(nullptr, steps, room);
}

unsigned int os::back_trace(unsigned int skip, unsigned int count, xylUInt64* addresses,
                            xylUInt64* hash) {
	note("back_trace(" + std::to_string(skip) + ", " + std::to_string(count) + ")");
	const auto& stack = scripted_symbols.stack;
	const auto written = std::min<unsigned int>(count, static_cast<unsigned int>(stack.size()));
	std::copy_n(stack.begin(), written, addresses);
	*hash = scripted_symbols.hash;
	return written;
}

void* xyl_heap_allocate_aligned(size_t size, size_t) { return xyl_heap_allocate(size); }
