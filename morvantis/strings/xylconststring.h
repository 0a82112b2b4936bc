// Strings whose storage lies inside the object.
#pragma once

#include <morvantis/strings/xylstring_base.h>

// A string of at most N - 1 characters (N counts the terminator) that never allocates. It is
// instantiated in the library for N = 16, 64, 128, 256 and 512, and for no others.
//
// kept: a text that is too long is refused and never cut. What is refused leaves the string empty.
template <int N> class xylConstString : public xylString_base {
public:
	xylConstString();
	// A null source gives the empty string. Nobody tests whether the text fits before it is copied:
	// one of N characters or more ends the process.
	xylConstString(const char* source);
	// Length and text of the source; the text is copied up to its first zero byte. The process ends
	// as above.
	xylConstString(const xylString_base& source);
	xylConstString(const xylConstString& source);

	using xylString_base::operator=;
	xylConstString& operator=(const xylConstString& source);

	// Takes a text of at most N - 1 characters; a null source makes the string empty. A longer one
	// makes it empty and is reported to the host as a warning. `source` may be part of this string.
	void operator=(const char* source) override;
	// Takes `count` bytes.
	//
	// kept: at most N - 2, one less than the assignment takes. More makes the string empty,
	// silently.
	void set(const char* source, int count) override;
	// Replaces the first occurrence of `search`, which must not be null. False, with nothing
	// changed, if there is none. A result of N characters or more ends the process.
	//
	// kept: what follows the match is counted with the length of `replacement` and not with its
	// own. Unless the two agree, the result is cut ("xabyz", ab by c: "xcy") or its length is too
	// large ("xaby", ab by cde: "xcdey" with length 7, and what stands behind the "y" is not
	// specified).
	// xylVarString::replace() has no such effect.
	bool replace(const char* search, const char* replacement) override;

private:
	void make_empty();
	// Copies up to the first zero byte; ends the process if that is not within N bytes.
	void copy_terminated(const char* source);

	char storage_[static_cast<size_t>(N)];
};

extern template class MORVANTIS_API xylConstString<16>;  // a short name
extern template class MORVANTIS_API xylConstString<64>;  // the text form of a GUID
extern template class MORVANTIS_API xylConstString<128>; // the name of an object type
extern template class MORVANTIS_API xylConstString<256>; // a path
extern template class MORVANTIS_API xylConstString<512>;
