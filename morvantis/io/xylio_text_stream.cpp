#include <morvantis/io/xylio_text_stream.h>

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

// The next token of a stream, in the area that bounds its length.
class Token {
public:
	explicit Token(xylIO_text_stream& stream) {
		stream.check_has_tokens();
		stream.buffer.next_token(text_, size_);
	}
	const char* text() const { return text_; }
	const char* end() const { return text_ + std::min(size_, limit - 1); }

private:
	static constexpr int limit = 8192;
	char text_[limit];
	int size_;
};

// The digits from `begin` to `end`, whatever characters they are, wrapping around.
xylUInt64 sum_of_digits(const char* begin, const char* end) {
	xylUInt64 sum = 0;
	xylUInt64 power = 1;
	for (const char* at = end; at != begin; power *= 10) {
		sum += power * static_cast<xylUInt64>(static_cast<xylInt64>(*--at - '0'));
	}
	return sum;
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

void xylIO_text_stream::append(const char* text, int length) {
	buffer.push_back(text, static_cast<unsigned int>(length));
	if (auto_flush) flush();
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylQuaternion& value) {
	const Lock lock(stream_mutex);
	char text[4 * (number_text::fixed_max + 1)];
	int length = 0;
	for (const float part : {value.x, value.y, value.z, value.w}) {
		length += write_fixed6_and_blank(text + length, static_cast<double>(part));
	}
	append(text, length);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylIO_Stream& source) {
	const Lock lock(stream_mutex);
	const int count = source.buffer.length();
	*this << count;
	append(source.buffer.char_p(), count);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator<<(float value) {
	return *this << static_cast<double>(value);
}

xylIO_Stream& xylIO_text_stream::operator<<(bool value) {
	const Lock lock(stream_mutex);
	append(value ? "1 " : "0 ", 2);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator<<(xylUInt64 value) {
	const Lock lock(stream_mutex);
	char text[number_text::integer_max + 1];
	text[number_text::write_unsigned(text, value)] = 0;
	return *this << xylConstString<64>(text);
}

xylIO_Stream& xylIO_text_stream::operator<<(xylInt64 value) {
	const Lock lock(stream_mutex);
	char text[number_text::integer_max + 1];
	text[number_text::write_signed(text, value)] = 0;
	return *this << xylConstString<64>(text);
}

xylIO_Stream& xylIO_text_stream::operator<<(int value) {
	const Lock lock(stream_mutex);
	char text[number_text::integer_max];
	append(text, number_text::write_signed(text, value));
	return *this;
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
	append(text, text ? static_cast<int>(std::strlen(text)) : 0);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylString_base& text) {
	const Lock lock(stream_mutex);
	append(text.char_p(), text.length());
	return *this;
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
	char text[number_text::fixed_max + 1];
	append(text, write_fixed6_and_blank(text, value));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator<<(const xylInt_vec3& value) {
	const Lock lock(stream_mutex);
	char text[3 * (number_text::integer_max + 1)];
	int length = 0;
	for (const int part : {value.x, value.y, value.z}) {
		length += write_int_and_blank(text + length, part);
	}
	append(text, length);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(char& value) {
	const Lock lock(stream_mutex);
	value = static_cast<char>(number_parse::parse_uint32(Token(*this).text()));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(unsigned char& value) {
	const Lock lock(stream_mutex);
	value = static_cast<unsigned char>(number_parse::parse_int32(Token(*this).text()));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(short& value) {
	const Lock lock(stream_mutex);
	value = static_cast<short>(number_parse::parse_int32(Token(*this).text()));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(unsigned short& value) {
	const Lock lock(stream_mutex);
	value = static_cast<unsigned short>(number_parse::parse_int32(Token(*this).text()));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(int& value) {
	const Lock lock(stream_mutex);
	value = static_cast<int>(number_parse::parse_uint32(Token(*this).text()));
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(unsigned int& value) {
	const Lock lock(stream_mutex);
	value = number_parse::parse_uint32(Token(*this).text());
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(bool& value) {
	const Lock lock(stream_mutex);
	value = number_parse::parse_int32(Token(*this).text()) != 0;
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylUInt64& value) {
	const Lock lock(stream_mutex);
	const Token token(*this);
	value = sum_of_digits(token.text(), token.end());
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(xylInt64& value) {
	const Lock lock(stream_mutex);
	const Token token(*this);
	const bool negative = *token.text() == '-';
	const xylUInt64 sum = sum_of_digits(token.text() + (negative ? 1 : 0), token.end());
	value = static_cast<xylInt64>(negative ? 0 - sum : sum);
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(float& value) {
	const Lock lock(stream_mutex);
	value = number_parse::parse_float(Token(*this).text());
	return *this;
}

xylIO_Stream& xylIO_text_stream::operator>>(double& value) {
	const Lock lock(stream_mutex);
	value = static_cast<double>(number_parse::parse_float(Token(*this).text()));
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
