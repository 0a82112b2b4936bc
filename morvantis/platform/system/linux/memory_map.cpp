#include <morvantis/platform/system/linux/memory_map.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace {

int digit_value(char c) {
	if (c >= '0' && c <= '9') return c - '0';
	if (c >= 'a' && c <= 'f') return c - 'a' + 10;
	return -1;
}

// Takes a hexadecimal number and the character behind it off the text. False without a digit, or
// with another character.
bool take_number(const char*& text, char end, xylUInt64* number) {
	if (digit_value(*text) < 0) return false;
	for (*number = 0; digit_value(*text) >= 0; ++text) {
		*number = *number << 4 | static_cast<xylUInt64>(digit_value(*text));
	}
	return *text++ == end;
}

} // namespace

bool os::parse_mapping(const char* line, Mapping* mapping) {
	if (!take_number(line, '-', &mapping->start) || !take_number(line, ' ', &mapping->end)) {
		return false;
	}
	const char* rights = line; // "rwxp"
	if (std::strlen(line) < 5 || line[4] != ' ') return false;
	line += 5;
	if (!take_number(line, ' ', &mapping->offset)) return false;
	mapping->readable = rights[0] == 'r';
	mapping->executable = rights[2] == 'x';
	line += std::strcspn(line, " "); // the device
	line += std::strspn(line, " ");
	line += std::strcspn(line, " "); // the number of the file
	mapping->path = line + std::strspn(line, " ");
	return true;
}

void os::Line_reader::start(int file, xylUInt64 position, xylUInt64 size) {
	file_ = file;
	position_ = position;
	left_ = size;
	begin_ = end_ = 0;
}

void os::Line_reader::refill() {
	std::memmove(buffer_.data(), &buffer_[begin_], end_ - begin_);
	end_ -= begin_;
	begin_ = 0;
	// One byte stays for the terminator of a last line without an end.
	const size_t wanted = std::min<xylUInt64>(left_, buffer_.size() - 1 - end_);
	if (wanted == 0) return;
	ssize_t count;
	do {
		count = pread(file_, &buffer_[end_], wanted, static_cast<off_t>(position_));
	} while (count < 0 && errno == EINTR);
	if (count <= 0) {
		left_ = 0;
		return;
	}
	end_ += static_cast<size_t>(count);
	position_ += static_cast<xylUInt64>(count);
	left_ -= static_cast<xylUInt64>(count);
}

const char* os::Line_reader::next() {
	const auto find_end = [&] {
		return static_cast<char*>(std::memchr(buffer_.data() + begin_, '\n', end_ - begin_));
	};
	char* line_end = find_end();
	if (!line_end) {
		refill();
		line_end = find_end();
	}
	if (!line_end && begin_ == end_) return nullptr;
	if (!line_end) line_end = buffer_.data() + end_; // cut, or the last one
	*line_end = 0;
	const char* line = buffer_.data() + begin_;
	begin_ = std::min(static_cast<size_t>(line_end - buffer_.data()) + 1, end_);
	return line;
}
