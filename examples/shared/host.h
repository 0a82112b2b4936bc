// The host's side of the library: the two interfaces through which everything leaves it.
#pragma once

#include <morvantis/core/zublibrary_interface.h>
#include <morvantis/core/zubmessage_interface.h>

#include <cstddef>
#include <string>
#include <vector>

// A host decides what becomes of each text: a game shows it, a server logs it, this one keeps all
// and prints them in the end. One object may implement both interfaces.
class Host : public zubLibrary_interface, public zubMessage_interface {
public:
	void print_texts() const;

	void error(const char* text, int) override { keep("error", text, 512); }
	void warning(const char* text, int) override { keep("warning", text, 4096); }
	void content_warning(const char* text, int) override { keep("content warning", text, 512); }
	void failed_assert(const char* text, int, const char*, bool, bool) override;
	void simple_assert(const char* text, int, const char*) override;
	void log(const char* text) override { keep("log", text, 65536); }
	void post_warning_line(const char* text) override { keep("warning line", text, 512); }
	void post_success_line(const char* text) override { keep("success line", text, 512); }
	void post_message_line_formatted(unsigned int, const char* text) override;
	void post_message_line(const xylVarString& text, const int&) override;

	// The decisions of this run.
	bool get_assert_on_exceptions() override { return false; }
	bool get_enable_deterministic_mode() override { return true; }
	bool get_disable_gui_messages() override { return false; }

	// A host with reference-counted objects would delete them here at the end of a frame.
	bool delete_later_queue_has_element(xylReference_counted_object*) override { return false; }
	void add_delete_later_queue(xylReference_counted_object*) override {}

private:
	struct Text {
		std::string kind, text;
	};
	// A text that fills the library's buffer has no terminator, so `limit` is that buffer's size.
	void keep(const char* kind, const char* text, size_t limit);

	std::vector<Text> texts_;
};
