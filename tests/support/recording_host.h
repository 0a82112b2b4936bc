// A host that remembers every call of the library, for tests of what the host is told.
#pragma once

#include <morvantis/core/zublibrary_interface.h>
#include <morvantis/core/zubmessage_interface.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

// One call of the library to its host, in words: the operation's name and its text, with the
// numbers beside it where there are any.
struct Host_call {
	std::string operation; // "error", "post_message_line", ...
	std::string text;
	std::vector<long long> numbers; // in the order of the arguments

	bool operator==(const Host_call&) const = default;
};

// Prints a call in a failed expectation.
void PrintTo(const Host_call& call, std::ostream* stream);

// The one host of a test program. support/test_main.cpp hands it to the library before the first
// test and fails every test that leaves calls behind which it did not take().
class Recording_host : public zubLibrary_interface {
public:
	static Recording_host& get();

	// The calls since the last take(), oldest first, and forgets them.
	std::vector<Host_call> take();
	// The texts of those calls, for tests that expect nothing but one operation.
	std::vector<std::string> take_texts();
	void record(Host_call call);
	// Clears calls and puts all answers back.
	void reset();
	// Makes a message interface on the library's heap that records here; each call a new one.
	zubMessage_interface* make_message_interface();

	void error(const char* text, int reserved) override;
	void warning(const char* text, int reserved) override;
	void content_warning(const char* text, int reserved) override;
	void failed_assert(const char* first_text, int number, const char* second_text, bool flag,
	                   bool reserved) override;
	void simple_assert(const char* first_text, int number, const char* second_text) override;
	void log(const char* text) override;
	bool get_assert_on_exceptions() override { return assert_on_exceptions; }
	bool get_enable_deterministic_mode() override { return deterministic_mode; }
	bool get_disable_gui_messages() override { return gui_messages_disabled; }
	bool delete_later_queue_has_element(xylReference_counted_object* object) override;
	void add_delete_later_queue(xylReference_counted_object* object) override;

	// The host's answers, which a test may set.
	bool assert_on_exceptions = false;
	bool deterministic_mode = false;
	bool gui_messages_disabled = false;
	std::vector<xylReference_counted_object*> delete_later_queue;

private:
	std::mutex mutex_;
	std::vector<Host_call> calls_;
};
