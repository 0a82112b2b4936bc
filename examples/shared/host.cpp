#include "host.h"

#include "table.h"

#include <morvantis/strings/xylvarstring.h>

#include <algorithm>
#include <set>

void Host::keep(const char* kind, const char* text, size_t limit) {
	texts_.push_back({kind, std::string(text, std::find(text, text + limit, '\0'))});
}

void Host::failed_assert(const char* text, int, const char*, bool, bool) {
	keep("failed assert", text, 512);
}

void Host::simple_assert(const char* text, int, const char*) { keep("assert", text, 512); }

void Host::post_message_line_formatted(unsigned int, const char* text) {
	keep("message line", text, 512);
}

void Host::post_message_line(const xylVarString& text, const int&) {
	texts_.push_back({"message line", text.char_p()});
}

void Host::print_texts() const {
	constexpr int shown_of_a_kind = 3;
	Table table({"what reached the host", "text"});
	std::set<std::string> kinds;
	for (const Text& text : texts_) kinds.insert(text.kind);
	for (const std::string& kind : kinds) {
		int shown = 0;
		for (const Text& text : texts_) {
			if (text.kind == kind && ++shown <= shown_of_a_kind) table.add({kind, text.text});
		}
		if (shown > shown_of_a_kind)
			table.add({kind, "and " + std::to_string(shown - shown_of_a_kind) + " more"});
	}
	table.print();
}
