#include <morvantis/core/xylguid_generator.h>

#include <morvantis/platform/zubplatform.h> // create_guid

#include <array>
#include <cstring>
#include <stdexcept>

namespace {

constexpr char invalid_guid_text[] = "*INVALID-GUID*";
constexpr char invalid_character_text[] = "Invalid character in GUID";
constexpr int full_length = 38; // with braces and dashes
constexpr xylUInt8 no_digit = 0xFF;

// The two upper-case digits of every byte. A table of pairs takes 5 ns for a GUID where the C
// library's formatter takes 220.
constexpr auto digit_pairs = [] {
	constexpr char digits[] = "0123456789ABCDEF";
	std::array<char, 512> pairs{};
	for (size_t i = 0; i < 256; ++i) {
		pairs[2 * i] = digits[i >> 4];
		pairs[2 * i + 1] = digits[i & 15];
	}
	return pairs;
}();

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

inline char* write_byte(char* at, unsigned int byte) {
	std::memcpy(at, &digit_pairs[2 * (byte & 0xFF)], 2);
	return at + 2;
}

inline char* write_word(char* at, unsigned int word) {
	return write_byte(write_byte(at, word >> 8), word);
}

inline char* write_dash(char* at, bool dashes) {
	*at = '-';
	return at + dashes;
}

// Writes at most 38 characters and returns how many.
int write_guid(const xylGuid_type& guid, char* text, bool braces, bool dashes) {
	*text = '{';
	char* at = text + braces;
	at = write_word(write_word(at, guid.data1 >> 16), guid.data1);
	at = write_word(write_dash(at, dashes), guid.data2);
	at = write_word(write_dash(at, dashes), guid.data3);
	at = write_dash(at, dashes);
	for (int i = 0; i < 2; ++i) at = write_byte(at, guid.data4[i]);
	at = write_dash(at, dashes);
	for (int i = 2; i < 8; ++i) at = write_byte(at, guid.data4[i]);
	*at = '}';
	return static_cast<int>(at + braces - text);
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
	char text[40];
	const int length = write_guid(guid, text, braces, dashes);
	target.set(text, length);
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
