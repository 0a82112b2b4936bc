// Sixteen positions at a time are filtered by the first and the last byte of the needle, and what
// passes is compared in full: W. Mula, "SIMD-friendly algorithms for substring searching", the
// generic form. Compared with a search for the first byte alone, the second byte keeps frequent
// letters from stopping the scan.

#include <morvantis/strings/find_bytes.h>

#include <bit>
#include <cstring>
#include <emmintrin.h>

namespace {

constexpr size_t block = 16; // positions looked at by one step

// A needle of at least two bytes, with its first and last byte spread over a register.
struct Filter {
	Filter(const char* bytes, size_t count)
		: needle(bytes), size(count), first(_mm_set1_epi8(bytes[0])),
		  last(_mm_set1_epi8(bytes[count - 1])) {}

	// The lowest match at one of the sixteen positions from `at` on, or null. Reads
	// 15 + size bytes.
	const char* match(const char* at) const {
		const __m128i heads = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
		const __m128i tails = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + size - 1));
		unsigned int candidates = static_cast<unsigned int>(_mm_movemask_epi8(
			_mm_and_si128(_mm_cmpeq_epi8(heads, first), _mm_cmpeq_epi8(tails, last))));
		for (; candidates != 0; candidates &= candidates - 1) {
			const char* candidate = at + std::countr_zero(candidates);
			if (std::memcmp(candidate + 1, needle + 1, size - 2) == 0) return candidate;
		}
		return nullptr;
	}

	const char* needle;
	size_t size;
	__m128i first, last;
};

bool matches_at(const char* at, const char* needle, size_t size) {
	return at[0] == needle[0] && std::memcmp(at, needle, size) == 0;
}

} // namespace

const char* find_bytes(const char* text, size_t text_size, const char* needle, size_t needle_size) {
	if (needle_size > text_size) return nullptr;
	if (needle_size == 0) return text;
	if (needle_size == 1) {
		return static_cast<const char*>(std::memchr(text, needle[0], text_size));
	}
	const char* const end = text + (text_size - needle_size) + 1; // behind the last position
	if (static_cast<size_t>(end - text) < block) {
		for (; text != end; ++text) {
			if (matches_at(text, needle, needle_size)) return text;
		}
		return nullptr;
	}
	const Filter filter(needle, needle_size);
	for (; static_cast<size_t>(end - text) >= block; text += block) {
		if (const char* found = filter.match(text)) return found;
	}
	// The rest, as the last sixteen positions: those looked at before have no match.
	return text == end ? nullptr : filter.match(end - block);
}

const char* find_last_bytes(const char* text, size_t text_size, const char* needle,
                            size_t needle_size) {
	if (needle_size > text_size) return nullptr;
	const char* at = text + (text_size - needle_size);
	if (needle_size == 0) return at;
	for (;; --at) {
		if (matches_at(at, needle, needle_size)) return at;
		if (at == text) return nullptr;
	}
}
