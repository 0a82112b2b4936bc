#include <morvantis/strings/xylconststring.h>

#include <morvantis/core/xylreport.h>

#include <cstdlib>
#include <cstring>

namespace {

constexpr char refused_text[] = "Could not set fixed-size(%d) string to: %s";

} // namespace

template <int N> xylConstString<N>::xylConstString() {
	text_ = storage_;
	make_empty();
}

template <int N> xylConstString<N>::xylConstString(const char* source) : xylConstString() {
	if (!source) return;
	copy_terminated(source);
	length_ = static_cast<int>(std::strlen(text_));
}

template <int N>
xylConstString<N>::xylConstString(const xylString_base& source) : xylConstString() {
	copy_terminated(source.char_p());
	length_ = source.length();
}

template <int N>
xylConstString<N>::xylConstString(const xylConstString& source)
	: xylConstString(static_cast<const xylString_base&>(source)) {}

template <int N> xylConstString<N>& xylConstString<N>::operator=(const xylConstString& source) {
	xylString_base::operator=(source);
	return *this;
}

template <int N> void xylConstString<N>::operator=(const char* source) {
	if (!source) return make_empty();
	const size_t length = std::strlen(source);
	if (length >= N) {
		xyl_warning(refused_text, N, source);
		return make_empty();
	}
	std::memmove(text_, source, length + 1);
	length_ = static_cast<int>(length);
}

template <int N> void xylConstString<N>::set(const char* source, int count) {
	if (count > N - 2) return make_empty();
	if (count > 0) std::memmove(text_, source, static_cast<size_t>(count));
	text_[count] = 0;
	length_ = count;
}

template <int N> bool xylConstString<N>::replace(const char* search, const char* replacement) {
	const char* match = std::strstr(text_, search);
	if (!match) return false;
	const size_t before = static_cast<size_t>(match - text_);
	const size_t added = std::strlen(replacement);
	const char* behind = match + std::strlen(search);
	const size_t rest = std::strlen(behind);
	// kept: the tail counts with the length of the replacement.
	const size_t end = before + added + (rest > 0 ? added : 0);
	if (end >= N || before + added + rest >= N) std::abort();

	char result[static_cast<size_t>(N)] = {};
	std::memcpy(result, text_, before);
	std::memcpy(result + before, replacement, added);
	std::memcpy(result + before + added, behind, rest);
	result[end] = 0;
	length_ = static_cast<int>(end);
	copy_terminated(result);
	return true;
}

template <int N> void xylConstString<N>::make_empty() {
	text_[0] = 0;
	length_ = 0;
}

template <int N> void xylConstString<N>::copy_terminated(const char* source) {
	const size_t length = std::strlen(source);
	if (length >= N) std::abort();
	std::memcpy(text_, source, length + 1);
}

template class xylConstString<16>;
template class xylConstString<64>;
template class xylConstString<128>;
template class xylConstString<256>;
template class xylConstString<512>;
