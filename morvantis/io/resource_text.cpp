// Sixteen bytes at a time with SSE2. Testing for the end only at separators, until the last few
// bytes, was the way to spare a byte loop its bound tests; a wide loop has next to none left, so
// this one counts and never passes the end, whatever the text.

#include <morvantis/io/resource_text.h>

#include <bit>

#include <emmintrin.h>

namespace {

constexpr xylUInt64 width = sizeof(__m128i);

// One byte by the rule.
void prepare_byte(xylUInt8& byte, Resource_text_flaws& flaws) {
	const xylUInt8 c = byte;
	if (c > ' ' && c < 0x80) {
		if (c != ',') return;
		byte = '.';
		flaws.has_comma = true;
		return;
	}
	byte = 0;
	const bool is_white = c == 0 || c == '\t' || c == '\n' || c == '\r' || c == ' ';
	if (!is_white) flaws.last_bad_byte = c;
}

__m128i equal(__m128i bytes, char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); }

// Sixteen bytes; `commas` collects where any were.
void prepare_block(xylUInt8* block, __m128i& commas, Resource_text_flaws& flaws) {
	const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
	const __m128i printable = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(' ')); // with sign
	const __m128i comma = equal(bytes, ',');
	commas = _mm_or_si128(commas, comma);
	static_assert((',' | 2) == '.');
	const __m128i dots = _mm_or_si128(bytes, _mm_and_si128(comma, _mm_set1_epi8(2)));
	_mm_storeu_si128(reinterpret_cast<__m128i*>(block), _mm_and_si128(dots, printable));

	const __m128i blank = _mm_or_si128(equal(bytes, ' '), equal(bytes, 0));
	const __m128i line_end = _mm_or_si128(equal(bytes, '\n'), equal(bytes, '\r'));
	const __m128i white = _mm_or_si128(_mm_or_si128(blank, line_end), equal(bytes, '\t'));
	const int good = _mm_movemask_epi8(_mm_or_si128(printable, white));
	const unsigned int bad = static_cast<unsigned int>(good) ^ 0xFFFF;
	if (bad == 0) [[likely]]
		return;
	alignas(width) xylUInt8 before[width];
	_mm_store_si128(reinterpret_cast<__m128i*>(before), bytes);
	flaws.last_bad_byte = before[std::bit_width(bad) - 1];
}

} // namespace

Resource_text_flaws prepare_resource_text(xylUInt8* bytes, xylUInt64 size) {
	Resource_text_flaws flaws;
	__m128i commas = _mm_setzero_si128();
	xylUInt64 i = 0;
	for (; size - i >= width; i += width) prepare_block(bytes + i, commas, flaws);
	flaws.has_comma = _mm_movemask_epi8(commas) != 0;
	for (; i < size; ++i) prepare_byte(bytes[i], flaws);
	return flaws;
}
