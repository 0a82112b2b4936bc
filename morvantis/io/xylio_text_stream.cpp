#include <morvantis/io/xylio_text_stream.h>

#include <morvantis/core/ascii.h>
#include <morvantis/core/number_parse.h>
#include <morvantis/core/number_text.h>
#include <morvantis/core/xylreport.h>
#include <morvantis/math/xylint_vec3.h>
#include <morvantis/math/xylquaternion.h>
#include <morvantis/strings/xylconststring.h>

#include <algorithm>
#include <cstring>
#include <mutex>

namespace {

constexpr char end_of_file_text[] = "Unexpected End of File while reading file: %s";
constexpr char broken_format_text[] = "format broken";

using Lock = std::lock_guard<xylRecursive_mutex>;

constexpr int token_area = 8192; // bytes of a token with its terminator

inline void move_cursor_to(xylVarString& buffer, const char* at) {
	buffer.reset_cursor(static_cast<int>(at - buffer.char_p()));
}

// The start of the next token where it stands; null where there is none, and in a text without a
// terminator, which a reader of digits might run past.
inline const char* token_in_place(const xylVarString& buffer) {
	if (buffer.eof()) return nullptr;
	const char* at = static_cast<const char*>(buffer.buffer_p());
	const char* const end = at + buffer.stream_length();
	if (!ascii::is_separator(*end)) return nullptr;
	while (at != end && ascii::is_separator(*at)) ++at;
	return at == end ? nullptr : at;
}

// The next token of a stream, in the area that bounds its length.
class Token {
public:
	explicit Token(xylIO_text_stream& stream) {
		stream.check_has_tokens();
		stream.buffer.next_token(text_, size_);
	}
	const char* text() const { return text_; }
	const char* end() const { return text_ + std::min(size_, token_area - 1); }

private:
	char text_[token_area];
	int size_;
};

// Reads a number by `read` from the next token, and moves the cursor behind that. Most tokens are
// nothing but a number: those are read where they stand, all others (in quotes, with something
// behind the number, too long) from a copy.
template <auto read> inline auto read_number(xylIO_text_stream& stream) {
	if (const char* const start = token_in_place(stream.buffer)) {
		const char* const text_end = stream.buffer.char_p() + stream.buffer.length();
		const auto number = read(start, text_end - start);
		if (ascii::is_separator(*number.end) && number.end - start < token_area) {
			move_cursor_to(stream.buffer, number.end);
			return number.value;
		}
	}
	return read(Token(stream).text(), 0).value;
}

// The digits from `begin` to `end`, whatever characters they are, wrapping around.
xylUInt64 read_digits(const char* begin, const char* end) {
	xylUInt64 value = 0;
	for (const char* at = begin; at != end; ++at) {
		value = value * 10 + static_cast<xylUInt64>(static_cast<xylInt64>(*at - '0'));
	}
	return value;
}

// A text where it stands, as a string to be read.
class Digits final : public xylString_base {
public:
	Digits(char* text, int length) {
		text_ = text;
		length_ = length;
		text[length] = 0;
	}

private:
	using xylString_base::operator=;
	void operator=(const char*) override {}
	void set(const char*, int) override {}
	bool replace(const char*, const char*) override { return false; }
};

// What each output ends with.
xylIO_Stream& end_output(xylIO_text_stream& stream) {
	if (stream.auto_flush) stream.flush();
	return stream;
}

int write_fixed6_and_blank(char* out, double value) {
	const int length = number_text::write_fixed6(out, value);
	out[length] = ' ';
	return length + 1;
}

int write_int_and_blank(char* out, int value) {
	const int length = number_text::write_signed(out, value);
	out[length] = ' ';
	return length + 1;
}

} // namespace

xylIO_text_stream::xylIO_text_stream(char*) {}

void xylIO_text_stream::check_has_tokens() {
	if (!buffer.has_more_tokens()) xyl_error(end_of_file_text, name.char_p());
}

xylIO_Stream& xylIO_text_stream::append(const char* text, int length) {
	buffer.push_back(text, static_cast<unsigned int>(length));
	return end_output(*this);
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylQuaternion& value) {
	const Lock lock(stream_mutex);
	buffer.append_written<4 * (number_text::fixed_max + 1)>([&value](char* out) {
		int length = 0;
		for (const float part : {value.x, value.y, value.z, value.w}) {
			length += write_fixed6_and_blank(out + length, static_cast<double>(part));
		}
		return length;
	});
	return end_output(*this);
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylIO_Stream& source) {
	const Lock lock(stream_mutex);
	const int count = source.buffer.length();
	*this << count;
	return append(source.buffer.char_p(), count);
}

xylIO_Stream& xylIO_text_stream::operator<<(float value) {
	return *this << static_cast<double>(value);
}

xylIO_Stream& xylIO_text_stream::operator<<(bool value) {
	const Lock lock(stream_mutex);
	return append(value ? "1 " : "0 ", 2);
}

xylIO_Stream& xylIO_text_stream::operator<<(xylUInt64 value) {
	const Lock lock(stream_mutex);
	char text[number_text::integer_max + 1];
	return *this << Digits(text, number_text::write_unsigned(text, value));
}

xylIO_Stream& xylIO_text_stream::operator<<(xylInt64 value) {
	const Lock lock(stream_mutex);
	char text[number_text::integer_max + 1];
	return *this << Digits(text, number_text::write_signed(text, value));
}

xylIO_Stream& xylIO_text_stream::operator<<(int value) {
	const Lock lock(stream_mutex);
	buffer.append(value);
	return end_output(*this);
}

xylIO_Stream& xylIO_text_stream::operator<<(unsigned int value) {
	return xylIO_text_stream::operator<<(static_cast<int>(value));
}

xylIO_Stream& xylIO_text_stream::operator<<(short value) {
	return xylIO_text_stream::operator<<(static_cast<int>(value));
}

xylIO_Stream& xylIO_text_stream::operator<<(unsigned char value) {
	return xylIO_text_stream::operator<<(static_cast<int>(value));
}

xylIO_Stream& xylIO_text_stream::operator<<(unsigned short value) {
	return xylIO_text_stream::operator<<(static_cast<int>(value));
}

xylIO_Stream& xylIO_text_stream::operator<<(const char* text) {
	const Lock lock(stream_mutex);
	return append(text, text ? static_cast<int>(std::strlen(text)) : 0);
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylString_base& text) {
	const Lock lock(stream_mutex);
	buffer.append(text);
	return end_output(*this);
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylStream_manip&) {
	const Lock lock(stream_mutex);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator<<(char value) {
	return xylIO_text_stream::operator<<(static_cast<int>(value));
}

xylIO_Stream& xylIO_text_stream::operator<<(double value) {
	const Lock lock(stream_mutex);
	buffer.append_written<number_text::fixed_max + 1>(
		[value](char* out) { return write_fixed6_and_blank(out, value); });
	return end_output(*this);
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylInt_vec3& value) {
	const Lock lock(stream_mutex);
	buffer.append_written<3 * (number_text::integer_max + 1)>([&value](char* out) {
		int length = 0;
		for (const int part : {value.x, value.y, value.z}) {
			length += write_int_and_blank(out + length, part);
		}
		return length;
	});
	return end_output(*this);
}

xylIO_Stream& xylIO_text_stream::operator>>(char& value) {
	const Lock lock(stream_mutex);
	value = static_cast<char>(read_number<number_parse::read_uint32>(*this));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(unsigned char& value) {
	const Lock lock(stream_mutex);
	value = static_cast<unsigned char>(read_number<number_parse::read_int32>(*this));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(short& value) {
	const Lock lock(stream_mutex);
	value = static_cast<short>(read_number<number_parse::read_int32>(*this));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(unsigned short& value) {
	const Lock lock(stream_mutex);
	value = static_cast<unsigned short>(read_number<number_parse::read_int32>(*this));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(int& value) {
	const Lock lock(stream_mutex);
	value = static_cast<int>(read_number<number_parse::read_uint32>(*this));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(unsigned int& value) {
	const Lock lock(stream_mutex);
	value = read_number<number_parse::read_uint32>(*this);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(bool& value) {
	const Lock lock(stream_mutex);
	value = read_number<number_parse::read_int32>(*this) != 0;
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylUInt64& value) {
	const Lock lock(stream_mutex);
	const Token token(*this);
	value = read_digits(token.text(), token.end());
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylInt64& value) {
	const Lock lock(stream_mutex);
	const Token token(*this);
	const bool negative = *token.text() == '-';
	const xylUInt64 digits = read_digits(token.text() + (negative ? 1 : 0), token.end());
	value = static_cast<xylInt64>(negative ? 0 - digits : digits);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(float& value) {
	const Lock lock(stream_mutex);
	value = read_number<number_parse::read_float>(*this);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(double& value) {
	const Lock lock(stream_mutex);
	value = static_cast<double>(read_number<number_parse::read_float>(*this));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylQuaternion& value) {
	const Lock lock(stream_mutex);
	return *this >> value.x >> value.y >> value.z >> value.w;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylInt_vec3& value) {
	const Lock lock(stream_mutex);
	return *this >> value.x >> value.y >> value.z;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylIO_Stream& target) {
	const Lock lock(stream_mutex);
	int count = 0;
	*this >> count;
	target.clear();
	for (; count > 0 && !buffer.eof(); --count) {
		target.buffer.append(*static_cast<const char*>(buffer.buffer_p()));
		buffer.advance_cursor_by(1);
	}
	return *this;
}

// Whether a check was due, which this does.
bool xylIO_text_stream::checks_format(const xylString_base& expected) {
	if (format_check_pending != 1) return false;
	xylVarString token;
	buffer.next_token_str(token);
	const int length = token.length();
	const bool is_equal =
		length == expected.length() &&
		std::memcmp(token.char_p(), expected.char_p(), static_cast<size_t>(length)) == 0;
	if (!is_equal) xyl_error(broken_format_text);
	format_check_pending = 0;
	return true;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylConstString<64>& text) {
	const Lock lock(stream_mutex);
	check_has_tokens();
	if (checks_format(text)) return *this;
	xylVarString token;
	buffer.next_token_str(token);
	text = token;
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylVarString& text) {
	const Lock lock(stream_mutex);
	check_has_tokens();
	if (!checks_format(text)) buffer.next_token_str(text);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(const xylStream_manip&) {
	const Lock lock(stream_mutex);
	return *this;
}
