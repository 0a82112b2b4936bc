#include "frame_text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace {

constexpr char unknown_source[] = "unknown_source";
constexpr char unknown_line[] = "unknown_line";
constexpr char unknown_function[] = "unknown_function";

// Reads along a text; after the first thing that isn't there, nothing is any more.
class Cursor {
public:
	Cursor(std::string_view text, size_t at) : text_(text), at_(at) {}

	bool is_good() const { return is_good_; }
	size_t at() const { return at_; }

	void word(std::string_view expected) {
		is_good_ = is_good_ && text_.substr(std::min(at_, text_.size())).starts_with(expected);
		if (is_good_) at_ += expected.size();
	}
	// `digits` digits, or with 0 as many as there are, at least one.
	std::uint64_t number(int base, size_t digits = 0) {
		std::uint64_t value = 0;
		if (!is_good_) return 0;
		const char* const begin = text_.data() + at_;
		const char* const end = digits ? begin + digits : text_.data() + text_.size();
		is_good_ = end <= text_.data() + text_.size();
		if (!is_good_) return 0;
		const auto [behind, failure] = std::from_chars(begin, end, value, base);
		is_good_ = failure == std::errc() && (digits == 0 || behind == end);
		at_ = static_cast<size_t>(behind - text_.data());
		return value;
	}
	void guid(std::array<unsigned char, 16>& guid) {
		// Three numbers, the lowest byte first in memory, and eight bytes.
		static constexpr size_t order[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
		word("{");
		for (const size_t place : order) guid[place] = static_cast<unsigned char>(number(16, 2));
		word("}");
	}

private:
	std::string_view text_;
	size_t at_;
	bool is_good_ = true;
};

bool has_identity(const Frame& frame) {
	return std::any_of(frame.guid.begin(), frame.guid.end(),
	                   [](unsigned char byte) { return byte != 0; });
}

void set_path(Frame& frame, std::string_view path) {
	frame.path = path;
	frame.name = path.substr(path.find_last_of("/\\") + 1);
}

bool read_raw(std::string_view line, size_t begin, Found_frame& found) {
	Frame frame;
	Cursor cursor(line, begin);
	cursor.word("0x");
	cursor.number(16, 16);
	cursor.word(" 0x");
	frame.offset = static_cast<std::uint32_t>(cursor.number(16, 16));
	cursor.word(" ");
	cursor.guid(frame.guid);
	cursor.word(" ");
	frame.age = static_cast<std::uint32_t>(cursor.number(10));
	cursor.word(" ");
	if (!cursor.is_good()) return false;
	std::string_view name = line.substr(cursor.at());
	while (!name.empty() && (name.back() == '\r' || name.back() == ' ')) name.remove_suffix(1);
	set_path(frame, name);
	found = {frame, begin, cursor.at() + name.size() - begin};
	return !frame.name.empty() && has_identity(frame);
}

bool read_deferred(std::string_view line, size_t begin, Found_frame& found) {
	Frame frame;
	const size_t end_of_name = line.find("@{", begin);
	if (end_of_name == std::string_view::npos || end_of_name == begin + 1) return false;
	set_path(frame, line.substr(begin + 1, end_of_name - begin - 1));
	Cursor cursor(line, end_of_name);
	cursor.word("@");
	cursor.guid(frame.guid);
	cursor.word(" (");
	frame.age = static_cast<std::uint32_t>(cursor.number(10));
	cursor.word("): 0:");
	frame.offset = static_cast<std::uint32_t>(cursor.number(10));
	if (!cursor.is_good()) return false;
	found = {frame, begin, cursor.at() - begin};
	return !frame.name.empty() && has_identity(frame);
}

} // namespace

bool find_frame(std::string_view line, size_t from, Found_frame& found) {
	for (size_t at = from; (at = line.find_first_of("0#", at)) != std::string_view::npos; ++at)
		if (line[at] == '#' ? read_deferred(line, at, found) : read_raw(line, at, found))
			return true;
	return false;
}

std::string guid_text(const std::array<unsigned char, 16>& g) {
	char text[40];
	std::snprintf(text, sizeof(text),
	              "{%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X}", g[3], g[2],
	              g[1], g[0], g[5], g[4], g[7], g[6], g[8], g[9], g[10], g[11], g[12], g[13], g[14],
	              g[15]);
	return text;
}

std::string resolved_text(const std::string& module, const Place& place) {
	return "@" + module + "@" + (place.source.empty() ? unknown_source : place.source) + " (" +
	       (place.line == 0 ? unknown_line : std::to_string(place.line)) +
	       "): " + (place.function.empty() ? unknown_function : place.function);
}
