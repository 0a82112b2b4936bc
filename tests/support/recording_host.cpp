#include "recording_host.h"

#include <morvantis/memory/xylheap.h>
#include <morvantis/strings/xylvarstring.h>

#include <algorithm>
#include <new>
#include <ostream>

namespace {

// Texts come from fixed buffers that may lack a terminator when they are full, as a real host
// knows: it reads no more than the largest buffer of each operation.
std::string bounded(const char* text, size_t limit) {
	return std::string(text, std::find(text, text + limit, '\0'));
}

class Recording_messages : public zubMessage_interface {
public:
	void post_warning_line(const char* text) override {
		Recording_host::get().record({"post_warning_line", bounded(text, 512), {}});
	}
	void post_success_line(const char* text) override {
		Recording_host::get().record({"post_success_line", bounded(text, 512), {}});
	}
	void post_message_line_formatted(unsigned int value, const char* text) override {
		Recording_host::get().record({"post_message_line_formatted", bounded(text, 512), {value}});
	}
	void post_message_line(const xylVarString& text, const int& value) override {
		Recording_host::get().record({"post_message_line", text.char_p(), {value}});
	}
};

} // namespace

void PrintTo(const Host_call& call, std::ostream* stream) {
	*stream << call.operation << "(\"" << call.text << '"';
	for (const long long number : call.numbers) *stream << ", " << number;
	*stream << ')';
}

Recording_host& Recording_host::get() {
	static Recording_host host;
	return host;
}

std::vector<Host_call> Recording_host::take() {
	const std::lock_guard lock(mutex_);
	return std::exchange(calls_, {});
}

std::vector<std::string> Recording_host::take_texts() {
	std::vector<std::string> texts;
	for (Host_call& call : take()) texts.push_back(std::move(call.text));
	return texts;
}

void Recording_host::record(Host_call call) {
	const std::lock_guard lock(mutex_);
	calls_.push_back(std::move(call));
}

void Recording_host::reset() {
	take();
	assert_on_exceptions = deterministic_mode = gui_messages_disabled = false;
	delete_later_queue.clear();
}

zubMessage_interface* Recording_host::make_message_interface() {
	return new (xyl_heap_allocate(sizeof(Recording_messages))) Recording_messages;
}

void Recording_host::error(const char* text, int reserved) {
	record({"error", bounded(text, 512), {reserved}});
}

void Recording_host::warning(const char* text, int reserved) {
	record({"warning", bounded(text, 4096), {reserved}});
}

void Recording_host::content_warning(const char* text, int reserved) {
	record({"content_warning", bounded(text, 512), {reserved}});
}

void Recording_host::failed_assert(const char* first_text, int number, const char* second_text,
                                   bool flag, bool reserved) {
	record(
		{"failed_assert", std::string(first_text) + "|" + second_text, {number, flag, reserved}});
}

void Recording_host::simple_assert(const char* first_text, int number, const char* second_text) {
	record({"simple_assert", std::string(first_text) + "|" + second_text, {number}});
}

void Recording_host::log(const char* text) { record({"log", bounded(text, 65536), {}}); }

bool Recording_host::delete_later_queue_has_element(xylReference_counted_object* object) {
	return std::find(delete_later_queue.begin(), delete_later_queue.end(), object) !=
	       delete_later_queue.end();
}

void Recording_host::add_delete_later_queue(xylReference_counted_object* object) {
	delete_later_queue.push_back(object);
}
