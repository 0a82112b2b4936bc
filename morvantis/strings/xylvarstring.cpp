#include <morvantis/strings/xylvarstring.h>

#include <morvantis/core/ascii.h>
#include <morvantis/core/legacy_format.h>
#include <morvantis/core/number_text.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/strings/copy_bytes.h>

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <utility>

namespace {

constexpr int least_capacity = 16;
constexpr unsigned long long largest_capacity = INT_MAX;
constexpr int number_limit = 32; // bytes into which a number with decimals is formatted
constexpr size_t format_limit = 512;

constexpr size_t size_of(int count) { return static_cast<size_t>(count); }

int first_capacity(unsigned int length) {
	return std::max(least_capacity, static_cast<int>(length + 1));
}

char* allocate_text(int capacity) {
	char* text = static_cast<char*>(xyl_heap_allocate(size_of(capacity)));
	text[0] = 0;
	return text;
}

// The capacity that follows `capacity` for a text of `wanted` bytes with its terminator. Where an
// int doesn't hold the double any more, which is between 1 and 2 GiB, it is the largest.
int doubled_capacity(int capacity, unsigned int wanted) {
	unsigned long long doubled = static_cast<unsigned int>(capacity);
	do {
		doubled *= 2;
	} while (doubled <= wanted);
	return static_cast<int>(wanted <= largest_capacity ? std::min(doubled, largest_capacity)
	                                                   : doubled);
}

} // namespace

xylVarString::xylVarString(const char* source) {
	if (source) assign_bytes(source, std::strlen(source));
}

xylVarString::xylVarString(const char* source, int count) {
	if (source) assign_bytes(source, size_of(count));
}

xylVarString::xylVarString(const std::string& source) {
	assign_bytes(source.data(), source.size());
}

xylVarString::xylVarString(const xylString_base& source) {
	assign_bytes(source.char_p(), size_of(source.length()));
}

xylVarString::xylVarString(const xylVarString& source)
	: xylVarString(static_cast<const xylString_base&>(source)) {
	if (!source.is_empty()) cursor_ = source.cursor_;
}

xylVarString::xylVarString(xylVarString&& source) noexcept { swap_contents(*this, source); }

xylVarString::~xylVarString() { xyl_heap_free(text_); }

void xylVarString::set_length_externally(unsigned int length) {
	ensure_length(length);
	length_ = static_cast<int>(length);
	text_[length_] = 0;
}

void xylVarString::empty_and_shrink(unsigned int length) {
	*this = "";
	xyl_heap_free(text_);
	capacity_ = first_capacity(length);
	text_ = allocate_text(capacity_);
}

void xylVarString::swap_contents(xylVarString& a, xylVarString& b) {
	std::swap(a.text_, b.text_);
	std::swap(a.length_, b.length_);
	std::swap(a.capacity_, b.capacity_);
	std::swap(a.cursor_, b.cursor_);
}

const xylVarString& xylVarString::empty_str() {
	static const xylVarString empty;
	return empty;
}

void xylVarString::operator=(const char* source) {
	assign_bytes(source, source ? std::strlen(source) : 0);
	cursor_ = 0;
}

xylVarString& xylVarString::operator=(const xylVarString& source) {
	assign_bytes(source.text_, size_of(source.length_));
	cursor_ = source.cursor_;
	return *this;
}

xylVarString& xylVarString::operator=(xylVarString&& source) noexcept {
	if (this == &source) return *this;
	xyl_heap_free(text_);
	str_init();
	swap_contents(*this, source);
	return *this;
}

xylVarString& xylVarString::operator=(const xylString_base& source) {
	xylString_base::operator=(source);
	return *this;
}

void xylVarString::set(const char* source, int count) { assign_bytes(source, size_of(count)); }

void xylVarString::set_content(const char* source) { *this = source; }

void xylVarString::copy(const char* source, int count) { assign_bytes(source, size_of(count)); }

void xylVarString::append(const char* source, int count) {
	if (count > 0) append_bytes(source, size_of(count));
}

void xylVarString::append(int value) { append(static_cast<long long>(value)); }

void xylVarString::append(unsigned int value) { append(static_cast<long long>(value)); }

void xylVarString::append(long long value) {
	append_written<number_text::integer_max>(
		[value](char* out) { return number_text::write_signed(out, value); });
}

void xylVarString::append(unsigned long long value) {
	append_written<number_text::integer_max>(
		[value](char* out) { return number_text::write_unsigned(out, value); });
}

void xylVarString::append(float value) { append(static_cast<double>(value)); }

void xylVarString::append(double value) {
	char text[number_text::fixed_max];
	const int length = number_text::write_fixed6(text, value);
	// kept: the text is what xyl_snprintf() leaves of it in a buffer of this size, which holds one
	// of exactly that size without a terminator.
	append_bytes(text, size_of(length > number_limit ? number_limit - 1 : length));
}

void xylVarString::append_formatted(const char* format, ...) {
	char text[format_limit];
	va_list arguments;
	va_start(arguments, format);
	format_bounded(text, sizeof(text), format, arguments);
	va_end(arguments);
	// A full buffer has no terminator.
	const void* end = std::memchr(text, 0, sizeof(text));
	const size_t length =
		end ? static_cast<size_t>(static_cast<const char*>(end) - text) : sizeof(text);
	if (length > 0) append_bytes(text, length);
}

void xylVarString::append_binary(const void* source, int count) {
	if (count < 1) return;
	const char* const bytes = static_cast<const char*>(source);
	const unsigned int end = static_cast<unsigned int>(length_) + static_cast<unsigned int>(count);
	if (static_cast<unsigned int>(capacity_) <= end) {
		append_growing(bytes, size_of(count), end);
	} else {
		std::memcpy(text_ + length_, bytes, size_of(count));
	}
	length_ = static_cast<int>(end);
}

void xylVarString::push_back(const void* source, unsigned int count) {
	if (count > 0) append_bytes(static_cast<const char*>(source), count);
}

xylVarString xylVarString::operator+(const xylVarString& other) const {
	xylVarString sum(*this);
	sum.append(other);
	return sum;
}

xylVarString xylVarString::operator+(int value) const {
	xylVarString sum(*this);
	sum.append(value);
	return sum;
}

xylVarString xylVarString::operator+(const char* other) const {
	xylVarString sum(*this);
	sum.append(other);
	return sum;
}

void xylVarString::delete_range(int start, int count) {
	if (count > length_ - start) count = length_ - start;
	std::memmove(text_ + start, text_ + start + count, size_of(length_ - start - count));
	length_ -= count;
	text_[length_] = 0;
}

void xylVarString::insert(int position, const xylVarString& source) {
	if (&source == this) return insert(position, xylVarString(source));
	const xylVarString tail = get_substring(position, length_);
	length_ = position;
	append(source);
	append(tail);
}

void xylVarString::insert(int position, char c) {
	const xylVarString tail = get_substring(position, length_);
	length_ = position;
	append(c);
	append(tail);
}

void xylVarString::remove(int start, int end) {
	const xylVarString tail = get_substring(end, length_);
	length_ = start;
	append(tail); // kept: an empty tail writes no terminator.
}

bool xylVarString::compare_strings(const xylVarString& a, const xylVarString& b,
                                   bool case_sensitive) {
	return (case_sensitive ? std::strcmp(a.char_p(), b.char_p())
	                       : ascii::compare_ignoring_case(a.char_p(), b.char_p())) < 0;
}

bool xylVarString::is_valid() const {
	if (!text_) return length_ == 0 && capacity_ == 0;
	return length_ >= 0 && length_ < capacity_ && size_of(capacity_) <= xyl_heap_usable_size(text_);
}

void xylVarString::str_init() {
	text_ = nullptr;
	length_ = 0;
	capacity_ = 0;
	cursor_ = 0;
}

// The one growth policy, for a capacity that is known not to do. What comes back is the old
// storage, or null: the caller's to free.
char* xylVarString::move_to_larger(unsigned int length) {
	char* const old = text_;
	const int capacity = old ? doubled_capacity(capacity_, length + 1) : first_capacity(length);
	text_ = allocate_text(capacity);
	// All of it: the length may not tell what is there.
	if (old) std::memcpy(text_, old, size_of(capacity_));
	capacity_ = capacity;
	return old;
}

void xylVarString::grow(unsigned int length) { xyl_heap_free(move_to_larger(length)); }

// Grows to a length of `end` and copies, without a terminator. The source may be a part of the old
// storage, which so lives until it is copied.
void xylVarString::append_growing(const char* source, size_t count, unsigned int end) {
	char* const old = move_to_larger(end);
	std::memcpy(text_ + length_, source, count);
	xyl_heap_free(old);
}

void xylVarString::append_bytes(const char* source, size_t count) {
	const unsigned int end = static_cast<unsigned int>(length_) + static_cast<unsigned int>(count);
	if (static_cast<unsigned int>(capacity_) <= end) {
		append_growing(source, count, end);
	} else {
		copy_bytes(text_ + length_, source, count);
	}
	length_ = static_cast<int>(end);
	text_[end] = 0;
}

// Replaces the text. The source may be a part of it: such a one needs no larger storage.
void xylVarString::assign_bytes(const char* source, size_t count) {
	ensure_length(static_cast<unsigned int>(count));
	copy_bytes(text_, source, count);
	length_ = static_cast<int>(count);
	terminate();
}

size_t xylVarStringHashFunction::operator()(const xylVarString& text) const {
	constexpr unsigned long long offset_basis = 0xcbf29ce484222325;
	constexpr unsigned long long prime = 0x100000001b3;
	unsigned long long hash = offset_basis;
	const char* const begin = text.char_p();
	for (const char* at = begin; at != begin + text.length(); ++at) {
		hash = (hash ^ static_cast<unsigned char>(*at)) * prime;
	}
	return hash;
}

bool xylVarStringSetEqual::operator()(const xylVarString& a, const xylVarString& b) const {
	return a == b;
}
