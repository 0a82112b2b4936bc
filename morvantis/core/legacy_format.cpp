// A formatter of our own, because those of the C runtimes differ between systems in what they
// return, in the length modifiers they know and in the texts of pointers, infinities and NaNs, and
// because they follow the locale that the host has set. Digits come from number_text and from
// std::to_chars, which is exact and knows no locale.

#include <morvantis/core/legacy_format.h>

#include <morvantis/core/ascii.h>
#include <morvantis/core/float_text.h>
#include <morvantis/core/number_text.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <string_view>

namespace {

// Where the text goes: keeps what fits and counts everything.
class Sink {
public:
	Sink(char* buffer, size_t size) : buffer_(buffer), size_(size) {}

	void write(std::string_view text) {
		const size_t kept = std::min(text.size(), room());
		if (kept != 0) std::memcpy(buffer_ + count_, text.data(), kept);
		count_ += text.size();
	}

	void fill(char c, size_t length) {
		const size_t kept = std::min(length, room());
		if (kept != 0) std::memset(buffer_ + count_, c, kept);
		count_ += length;
	}

	int finish() {
		if (count_ < size_) buffer_[count_] = 0;
		return count_ > size_ ? -1 : static_cast<int>(count_);
	}

private:
	size_t room() const { return count_ < size_ ? size_ - count_ : 0; }

	char* buffer_;
	size_t size_;
	size_t count_ = 0; // of the whole text
};

// The arguments, fetched by the type that the caller passed.
struct Arguments {
	va_list list;
};

enum class Length { none, hh, h, l, ll, z, long_double };

struct Directive {
	bool left = false;      // '-'
	bool plus = false;      // '+'
	bool space = false;     // ' '
	bool alternate = false; // '#'
	bool zero = false;      // '0'
	int width = 0;
	int precision = no_precision;
	Length length = Length::none;
	char conversion = 0;
};

// Longer ones first where one begins another.
constexpr struct {
	const char* text;
	Length length;
} length_modifiers[] = {
	{"hh", Length::hh},  {"h", Length::h},      {"ll", Length::ll},         {"l", Length::l},
	{"I64", Length::ll}, {"I32", Length::none}, {"I", Length::z},           {"z", Length::z},
	{"j", Length::ll},   {"t", Length::z},      {"L", Length::long_double},
};

// A number in the format; one too large for an int stops at the greatest.
const char* parse_number(const char* at, int* value) {
	xylInt64 number = 0;
	for (; ascii::is_digit(*at); ++at)
		number = std::min<xylInt64>(number * 10 + (*at - '0'), INT_MAX);
	*value = static_cast<int>(number);
	return at;
}

const char* parse_flags(const char* at, Directive* directive) {
	for (;; ++at) {
		switch (*at) {
		case '-':
			directive->left = true;
			break;
		case '+':
			directive->plus = true;
			break;
		case ' ':
			directive->space = true;
			break;
		case '#':
			directive->alternate = true;
			break;
		case '0':
			directive->zero = true;
			break;
		default:
			return at;
		}
	}
}

const char* parse_width(const char* at, Directive* directive, Arguments* arguments) {
	if (*at != '*') return parse_number(at, &directive->width);
	const int width = va_arg(arguments->list, int);
	if (width < 0) directive->left = true;
	// The magnitude of the most negative int is no int.
	directive->width = width == INT_MIN ? INT_MAX : std::abs(width);
	return at + 1;
}

const char* parse_precision(const char* at, Directive* directive, Arguments* arguments) {
	if (*at != '.') return at;
	++at;
	if (*at != '*') return parse_number(at, &directive->precision);
	directive->precision = std::max(va_arg(arguments->list, int), no_precision);
	return at + 1;
}

const char* parse_length(const char* at, Directive* directive) {
	for (const auto& modifier : length_modifiers) {
		if (*at != modifier.text[0]) continue; // mostly there is none
		const size_t size = std::strlen(modifier.text);
		if (std::strncmp(at, modifier.text, size) != 0) continue;
		directive->length = modifier.length;
		return at + size;
	}
	return at;
}

// The parts of one directive's text, in their order.
struct Field {
	std::string_view prefix = {}; // a sign, "0x" or both
	size_t zeros = 0;             // digits between prefix and body
	std::string_view body = {};
	size_t inner_zeros = 0;     // digits between body and tail
	std::string_view tail = {}; // an exponent
	bool zero_padded = false;
};

// The one place that looks at the width, '-' and '0'.
void write_field(Sink* sink, const Directive& directive, Field field) {
	const size_t length = field.prefix.size() + field.zeros + field.body.size() +
	                      field.inner_zeros + field.tail.size();
	const auto width = static_cast<size_t>(directive.width);
	const size_t padding = width > length ? width - length : 0;
	const bool pads_inside = field.zero_padded && directive.zero && !directive.left;
	if (pads_inside)
		field.zeros += padding;
	else if (!directive.left)
		sink->fill(' ', padding);
	sink->write(field.prefix);
	sink->fill('0', field.zeros);
	sink->write(field.body);
	sink->fill('0', field.inner_zeros);
	sink->write(field.tail);
	if (directive.left) sink->fill(' ', padding);
}

void write_text(Sink* sink, const Directive& directive, const char* text) {
	if (!text) text = "(null)";
	size_t length;
	if (directive.precision == no_precision) {
		length = std::strlen(text);
	} else { // the text needs no terminator within the precision
		const auto limit = static_cast<size_t>(directive.precision);
		for (length = 0; length < limit && text[length];) ++length;
	}
	write_field(sink, directive, {.body = {text, length}});
}

void write_byte(Sink* sink, const Directive& directive, int value) {
	const char c = static_cast<char>(value);
	write_field(sink, directive, {.body = {&c, 1}});
}

xylInt64 fetch_signed(Length length, Arguments* arguments) {
	switch (length) {
	case Length::hh:
		return static_cast<signed char>(va_arg(arguments->list, int));
	case Length::h:
		return static_cast<short>(va_arg(arguments->list, int));
	case Length::none:
		return va_arg(arguments->list, int);
	case Length::l:
		return va_arg(arguments->list, long);
	default:
		return va_arg(arguments->list, long long);
	}
}

xylUInt64 fetch_unsigned(Length length, Arguments* arguments) {
	switch (length) {
	case Length::hh:
		return static_cast<unsigned char>(va_arg(arguments->list, unsigned int));
	case Length::h:
		return static_cast<unsigned short>(va_arg(arguments->list, unsigned int));
	case Length::none:
		return va_arg(arguments->list, unsigned int);
	case Length::l:
		return va_arg(arguments->list, unsigned long);
	default:
		return va_arg(arguments->list, unsigned long long);
	}
}

std::string_view sign_of(const Directive& directive, bool is_negative) {
	if (is_negative) return "-";
	if (directive.plus) return "+";
	return directive.space ? " " : "";
}

// Digits of an integer, with zeros before them up to the precision. No digits at all for 0 with
// precision 0. A precision takes the effect of '0' away.
void write_integer(Sink* sink, const Directive& directive, std::string_view prefix,
                   std::string_view digits) {
	if (directive.precision == 0 && digits == "0") digits = {};
	const auto least = static_cast<size_t>(std::max(directive.precision, 0));
	write_field(sink, directive,
	            {.prefix = prefix,
	             .zeros = least > digits.size() ? least - digits.size() : 0,
	             .body = digits,
	             .zero_padded = directive.precision == no_precision});
}

void write_signed(Sink* sink, const Directive& directive, xylInt64 value) {
	const auto bits = static_cast<xylUInt64>(value);
	char digits[number_text::integer_max];
	const int count = number_text::write_unsigned(digits, value < 0 ? 0 - bits : bits);
	write_integer(sink, directive, sign_of(directive, value < 0),
	              {digits, static_cast<size_t>(count)});
}

void make_upper(char* text, int length) {
	std::transform(text, text + length, text, ascii::to_upper);
}

void write_unsigned(Sink* sink, const Directive& directive, xylUInt64 value) {
	char digits[22]; // octal is the longest
	const int base = directive.conversion == 'u' ? 10 : directive.conversion == 'o' ? 8 : 16;
	const char* end = std::to_chars(digits, digits + sizeof(digits), value, base).ptr;
	const int count = static_cast<int>(end - digits);
	std::string_view prefix;
	if (directive.conversion == 'X') make_upper(digits, count);
	if (directive.alternate && base == 16 && value != 0) {
		prefix = directive.conversion == 'X' ? "0X" : "0x";
	} else if (directive.alternate && base == 8 && directive.precision <= count &&
	           (value != 0 || directive.precision == 0)) {
		prefix = "0"; // unless the precision has made the first digit a 0 already
	}
	write_integer(sink, directive, prefix, {digits, static_cast<size_t>(count)});
}

void write_pointer(Sink* sink, const Directive& directive, const void* pointer) {
	const auto value = reinterpret_cast<xylUInt64>(pointer);
	char digits[16];
	for (int i = 0; i < 16; ++i) digits[i] = "0123456789ABCDEF"[value >> (60 - 4 * i) & 15];
	write_field(sink, directive, {.body = {digits, sizeof(digits)}});
}

void write_not_finite(Sink* sink, const Directive& directive, double value, bool is_upper) {
	char text[16];
	const int length = number_text::write_not_finite(text, value);
	if (is_upper) make_upper(text, length);
	const bool is_negative = text[0] == '-';
	const std::string_view body(text, static_cast<size_t>(length));
	write_field(sink, directive,
	            {.prefix = sign_of(directive, is_negative), .body = body.substr(is_negative)});
}

void write_float(Sink* sink, const Directive& directive, double value) {
	const char lower = static_cast<char>(directive.conversion | 0x20);
	const bool is_upper = directive.conversion != lower;
	if (!std::isfinite(value)) return write_not_finite(sink, directive, value, is_upper);

	Float_text number;
	write_float_text(&number, std::fabs(value), lower, directive.precision, directive.alternate);
	char prefix[4];
	std::string_view sign = sign_of(directive, std::signbit(value));
	int prefix_length = static_cast<int>(sign.copy(prefix, 1));
	if (lower == 'a') {
		std::memcpy(prefix + prefix_length, "0x", 2);
		prefix_length += 2;
	}
	if (is_upper) {
		make_upper(number.text, number.length);
		make_upper(prefix, prefix_length);
	}
	const std::string_view text(number.text, static_cast<size_t>(number.length));
	const size_t tail = text.size() - static_cast<size_t>(number.tail);
	write_field(sink, directive,
	            {.prefix = {prefix, static_cast<size_t>(prefix_length)},
	             .body = text.substr(0, tail),
	             .inner_zeros = static_cast<size_t>(number.zeros),
	             .tail = text.substr(tail),
	             .zero_padded = true});
}

double fetch_float(Length length, Arguments* arguments) {
	if (length == Length::long_double) {
		return static_cast<double>(va_arg(arguments->list, long double));
	}
	return va_arg(arguments->list, double);
}

// Wide characters are none of ours: "%ls" and "%lc" are copied like an unknown directive.
bool is_narrow(const Directive& directive) { return directive.length != Length::l; }

// Writes what the directive stands for; false if it is no directive.
bool write_directive(Sink* sink, const Directive& directive, Arguments* arguments) {
	switch (directive.conversion) {
	case '%':
		sink->fill('%', 1);
		return true;
	case 'd':
	case 'i':
		write_signed(sink, directive, fetch_signed(directive.length, arguments));
		return true;
	case 'u':
	case 'o':
	case 'x':
	case 'X':
		write_unsigned(sink, directive, fetch_unsigned(directive.length, arguments));
		return true;
	case 'f':
	case 'F':
	case 'e':
	case 'E':
	case 'g':
	case 'G':
	case 'a':
	case 'A':
		write_float(sink, directive, fetch_float(directive.length, arguments));
		return true;
	case 'c':
		if (!is_narrow(directive)) return false;
		write_byte(sink, directive, va_arg(arguments->list, int));
		return true;
	case 's':
		if (!is_narrow(directive)) return false;
		write_text(sink, directive, va_arg(arguments->list, const char*));
		return true;
	case 'p':
		write_pointer(sink, directive, va_arg(arguments->list, const void*));
		return true;
	case 'n':
		// A format that came from outside must not be able to store anything.
		static_cast<void>(va_arg(arguments->list, void*));
		return true;
	default:
		return false;
	}
}

// Handles the directive behind the '%' at `at`; the place in the format to go on from.
const char* format_directive(Sink* sink, const char* at, Arguments* arguments) {
	Directive directive;
	const char* end = parse_flags(at + 1, &directive);
	end = parse_width(end, &directive, arguments);
	end = parse_precision(end, &directive, arguments);
	end = parse_length(end, &directive);
	directive.conversion = *end;
	if (write_directive(sink, directive, arguments)) return end + 1;
	sink->fill('%', 1); // what follows it has no other '%' and is copied as text
	return at + 1;
}

} // namespace

int format_bounded(char* buffer, size_t size, const char* format, va_list arguments) {
	Sink sink(buffer, size);
	Arguments rest;
	va_copy(rest.list, arguments);
	for (const char* at = format; *at;) {
		if (*at == '%') {
			at = format_directive(&sink, at, &rest);
			continue;
		}
		const char* end = at;
		while (*end && *end != '%') ++end;
		sink.write({at, static_cast<size_t>(end - at)});
		at = end;
	}
	va_end(rest.list);
	return sink.finish();
}
