#include <morvantis/core/float_text.h>

#include <morvantis/core/number_text.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace {

// The exponent begins at `mark`.
void find_tail(Float_text* out, char mark) {
	const void* at = std::memchr(out->text, mark, static_cast<size_t>(out->length));
	out->tail = at ? static_cast<int>(out->text + out->length - static_cast<const char*>(at)) : 0;
}

// '#': there is a point even if no digit follows it.
void add_point(Float_text* out) {
	if (std::memchr(out->text, '.', static_cast<size_t>(out->length))) return;
	char* at = out->text + out->length - out->tail;
	std::memmove(at + 1, at, static_cast<size_t>(out->tail));
	*at = '.';
	++out->length;
}

void write_form(Float_text* out, double magnitude, std::chars_format form, int precision) {
	const int kept = std::min(precision, most_decimals);
	out->zeros = precision - kept;
	const auto end = std::to_chars(out->text, out->text + sizeof(out->text), magnitude, form, kept);
	out->length = static_cast<int>(end.ptr - out->text);
}

void write_scientific(Float_text* out, double magnitude, int precision) {
	write_form(out, magnitude, std::chars_format::scientific, precision);
	find_tail(out, 'e');
}

void write_hexadecimal(Float_text* out, double magnitude, int precision) {
	constexpr auto form = std::chars_format::hex;
	if (precision == no_precision) { // as many digits as the value has
		const auto end = std::to_chars(out->text, out->text + sizeof(out->text), magnitude, form);
		out->length = static_cast<int>(end.ptr - out->text);
	} else {
		write_form(out, magnitude, form, precision);
	}
	find_tail(out, 'p');
}

// Of the number just written in the scientific form.
int exponent_of(const Float_text& number) {
	const char* end = number.text + number.length;
	const char* at = end - number.tail + 1;
	int exponent = 0;
	std::from_chars(*at == '+' ? at + 1 : at, end, exponent);
	return exponent;
}

// The fixed form if the scientific one would have an exponent from -4 to below the precision.
// Without '#' the zeros at the end go, which the standard library does by itself.
void write_general(Float_text* out, double magnitude, int precision, bool keeps_zeros) {
	const int digits = std::max(precision, 1);
	if (!keeps_zeros) {
		write_form(out, magnitude, std::chars_format::general, digits);
		out->zeros = 0;
		return;
	}
	write_scientific(out, magnitude, digits - 1);
	const int exponent = exponent_of(*out);
	if (exponent < -4 || exponent >= digits) return;
	out->tail = 0;
	write_form(out, magnitude, std::chars_format::fixed, digits - 1 - exponent);
}

} // namespace

void write_float_text(Float_text* out, double magnitude, char conversion, int precision,
                      bool alternate) {
	const int decimals = precision == no_precision ? 6 : precision;
	if (conversion == 'f' && decimals == 6) {
		out->length = number_text::write_fixed6(out->text, magnitude);
	} else if (conversion == 'f') {
		write_form(out, magnitude, std::chars_format::fixed, decimals);
	} else if (conversion == 'e') {
		write_scientific(out, magnitude, decimals);
	} else if (conversion == 'g') {
		write_general(out, magnitude, decimals, alternate);
	} else {
		write_hexadecimal(out, magnitude, precision);
	}
	if (alternate) add_point(out);
}
