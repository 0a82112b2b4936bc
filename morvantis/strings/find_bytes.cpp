// Sixteen positions at a time are filtered by the first, the middle and the last byte of the
// needle, and what passes is compared in full: after W. Mula, "SIMD-friendly algorithms for
// substring searching", the generic form, which has the first and the last alone. In a text of
// frequent letters every tenth step then stops for a comparison, and no processor guesses which;
// the third byte leaves one in a hundred.

#include <morvantis/strings/find_bytes.h>

#include <bit>
#include <cstring>
#include <emmintrin.h>

namespace {

constexpr size_t block = 16; // positions looked at by one step

template <typename Part> bool are_equal_at(const char* a, const char* b) {
	Part from_a, from_b;
	std::memcpy(&from_a, a, sizeof(Part));
	std::memcpy(&from_b, b, sizeof(Part));
	return from_a == from_b;
}

// Without a call of memcmp(), over which the loop could keep nothing in its vector registers. The
// last part may overlap the one before.
template <typename Part> bool are_equal_in_parts(const char* a, const char* b, size_t count) {
	const size_t last = count - sizeof(Part);
	for (size_t i = 0; i < last; i += sizeof(Part)) {
		if (!are_equal_at<Part>(a + i, b + i)) return false;
	}
	return are_equal_at<Part>(a + last, b + last);
}

// `count` is not 0.
bool are_equal(const char* a, const char* b, size_t count) {
	if (count >= 8) return are_equal_in_parts<unsigned long long>(a, b, count);
	if (count >= 4) return are_equal_in_parts<unsigned int>(a, b, count);
	return are_equal_in_parts<char>(a, b, count);
}

// A needle of at least two bytes, with three of them each spread over a register.
struct Filter {
	Filter(const char* bytes, size_t count)
		: needle(bytes), size(count), first(_mm_set1_epi8(bytes[0])),
		  middle(_mm_set1_epi8(bytes[count / 2])), last(_mm_set1_epi8(bytes[count - 1])) {}

	// The lowest match at one of the sixteen positions from `at` on, or null. Reads
	// 15 + size bytes.
	const char* match(const char* at) const {
		const auto equal = [at](size_t offset, __m128i byte) {
			const auto* bytes = reinterpret_cast<const __m128i*>(at + offset);
			return _mm_cmpeq_epi8(_mm_loadu_si128(bytes), byte);
		};
		const __m128i ends = _mm_and_si128(equal(0, first), equal(size - 1, last));
		auto candidates = static_cast<unsigned int>(
			_mm_movemask_epi8(_mm_and_si128(ends, equal(size / 2, middle))));
		for (; candidates != 0; candidates &= candidates - 1) {
			const char* candidate = at + std::countr_zero(candidates);
			if (are_equal(candidate, needle, size)) return candidate;
		}
		return nullptr;
	}

	const char* needle;
	size_t size;
	__m128i first, middle, last;
};

bool matches_at(const char* at, const char* needle, size_t size) {
	return at[0] == needle[0] && are_equal(at, needle, size);
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
