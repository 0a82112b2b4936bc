#include <morvantis/core/xylguid_generator.h>

#include <morvantis/platform/zubplatform.h> // create_guid

#include <array>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include <emmintrin.h>

namespace {

constexpr char invalid_guid_text[] = "*INVALID-GUID*";
constexpr char invalid_character_text[] = "Invalid character in GUID";
constexpr int full_length = 38; // with braces and dashes
constexpr xylUInt8 no_digit = 0xFF;

// The value of every byte that is a digit of either case, `no_digit` for the rest.
constexpr auto digit_values = [] {
	std::array<xylUInt8, 256> values{};
	values.fill(no_digit);
	for (xylUInt8 i = 0; i < 10; ++i) values['0' + size_t{i}] = i;
	for (xylUInt8 i = 0; i < 6; ++i) {
		values['a' + size_t{i}] = values['A' + size_t{i}] = static_cast<xylUInt8>(10 + i);
	}
	return values;
}();

// The ASCII characters of sixteen values from 0 to 15, in upper case.
inline __m128i digits_of(__m128i values) {
	const __m128i above_nine = _mm_cmpgt_epi8(values, _mm_set1_epi8(9));
	const __m128i gap = _mm_and_si128(above_nine, _mm_set1_epi8('A' - '9' - 1));
	return _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), gap);
}

// Eight bytes in the other order; compilers know the pattern for one instruction.
inline xylUInt64 reversed(xylUInt64 value) {
	value = (value & 0x00FF00FF00FF00FF) << 8 | (value >> 8 & 0x00FF00FF00FF00FF);
	value = (value & 0x0000FFFF0000FFFF) << 16 | (value >> 16 & 0x0000FFFF0000FFFF);
	return value << 32 | value >> 32;
}

// What stands around the digits of the four forms: by dashes, then by braces.
constexpr std::string_view forms[2][2] = {
	{"00000000000000000000000000000000", "{00000000000000000000000000000000}"},
	{"00000000-0000-0000-0000-000000000000", "{00000000-0000-0000-0000-000000000000}"}};

inline void store_four(char* at, __m128i characters) {
	const int four = _mm_cvtsi128_si32(characters);
	std::memcpy(at, &four, 4);
}
inline void store_eight(char* at, __m128i characters) {
	_mm_storel_epi64(reinterpret_cast<__m128i*>(at), characters);
}

// Writes the 32 digits into a form, from its first digit on, and nothing else.
//
// They are made at once in two registers, which leaves little more to do than to store them. A
// table with the two digits of every byte took twice the time.
void write_digits(const xylGuid_type& guid, char* at, bool dashes) {
	xylUInt64 back;
	std::memcpy(&back, guid.data4, sizeof(back));
	const xylUInt64 front =
		reversed(xylUInt64{guid.data1} << 32 | xylUInt64{guid.data2} << 16 | guid.data3);
	const __m128i bytes = _mm_set_epi64x(static_cast<xylInt64>(back), static_cast<xylInt64>(front));
	const __m128i mask = _mm_set1_epi8(15);
	const __m128i high = _mm_and_si128(_mm_srli_epi16(bytes, 4), mask);
	const __m128i low = _mm_and_si128(bytes, mask);
	const __m128i first = digits_of(_mm_unpacklo_epi8(high, low));  // digits 0 to 15
	const __m128i second = digits_of(_mm_unpackhi_epi8(high, low)); // digits 16 to 31

	if (dashes) {
		store_eight(at, first);
		store_four(at + 9, _mm_srli_si128(first, 8));
		store_four(at + 14, _mm_srli_si128(first, 12));
		store_four(at + 19, second);
		store_eight(at + 24, _mm_srli_si128(second, 4));
		store_four(at + 32, _mm_srli_si128(second, 12));
	} else {
		_mm_storeu_si128(reinterpret_cast<__m128i*>(at), first);
		_mm_storeu_si128(reinterpret_cast<__m128i*>(at + 16), second);
	}
}

[[noreturn]] void refuse_character() { throw std::domain_error(invalid_character_text); }

inline unsigned int digit_value(char c) {
	const xylUInt8 value = digit_values[static_cast<xylUInt8>(c)];
	if (value == no_digit) refuse_character();
	return value;
}

// Reads exactly `count` digits; a terminator is none, so nothing behind it is read.
inline unsigned int read_digits(const char*& text, int count) {
	unsigned int value = 0;
	for (int i = 0; i < count; ++i) value = value << 4 | digit_value(*text++);
	return value;
}

inline void skip(const char*& text, char c) { text += *text == c; }

} // namespace

xylGuid_generator* xyl_guid_generator_ptr = nullptr;

xylGuid_generator::xylGuid_generator() { invalid_guid_ = invalid_guid_text; }
xylGuid_generator::xylGuid_generator(const xylGuid_generator&) = default;
xylGuid_generator& xylGuid_generator::operator=(const xylGuid_generator&) = default;
xylGuid_generator::~xylGuid_generator() = default;

xylConstString<64> xylGuid_generator::get_guid(void* key) {
	xylGuid_type guid{};
	zubPlatform::create_guid(&guid);
	xylConstString<64>& text = guids_[key];
	guid_to_string(guid, text, true, true);
	return text;
}

void xylGuid_generator::register_guid(void* key, const xylString_base& text) {
	guids_[key] = text.char_p();
}

void xylGuid_generator::deregister_guid(void* key, const xylString_base&) { guids_.erase(key); }

bool xylGuid_generator::is_valid_guid(const xylString_base& text) {
	if (text.length() != full_length) return false;
	const char* characters = text.char_p();
	for (int i = 1; i <= 24; ++i) {
		const bool is_dash_place = i == 9 || i == 14 || i == 19 || i == 24;
		const char c = characters[i];
		if (is_dash_place ? c != '-' : digit_values[static_cast<xylUInt8>(c)] == no_digit) {
			return false;
		}
	}
	return true;
}

void xylGuid_generator::guid_to_string(xylGuid_type guid, xylString_base& target, bool braces,
                                       bool dashes) {
	// The form goes in first and the digits over it: a copy of a text just put together would wait
	// for its pieces to leave the store buffer, which took longer than all else.
	const std::string_view form = forms[dashes][braces];
	target.set(form.data(), static_cast<int>(form.size()));
	if (target.is_empty()) return; // too short a string
	write_digits(guid, &target[braces], dashes);
}

xylGuid_type xylGuid_generator::string_to_guid(const char* text) { return make_guid_helper(text); }

int xylGuid_generator::parse_hex_digit(char c) { return static_cast<int>(digit_value(c)); }

xylGuid_type xylGuid_generator::make_guid_helper(const char* text) {
	xylGuid_type guid;
	skip(text, '{');
	guid.data1 = read_digits(text, 8);
	skip(text, '-');
	guid.data2 = static_cast<xylUInt16>(read_digits(text, 4));
	skip(text, '-');
	guid.data3 = static_cast<xylUInt16>(read_digits(text, 4));
	skip(text, '-');
	for (int i = 0; i < 2; ++i) guid.data4[i] = static_cast<xylUInt8>(read_digits(text, 2));
	skip(text, '-');
	for (int i = 2; i < 8; ++i) guid.data4[i] = static_cast<xylUInt8>(read_digits(text, 2));
	return guid;
}
