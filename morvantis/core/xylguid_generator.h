// Fresh GUID texts, remembered by the object they name; and GUIDs to and from text.
#pragma once

#include <morvantis/core/xylguid.h>
#include <morvantis/memory/xylmap.h>
#include <morvantis/strings/xylconststring.h>

// Hands out GUID texts and keeps one for each object pointer.
//
// A pointer is only a key and never followed; entries don't end with their object, so its owner
// deregisters it first. The texts that are handed out have the form with braces and dashes,
// "{01234567-89AB-CDEF-0123-456789ABCDEF}", with upper-case digits.
//
// Threads: a generator belongs to one thread at a time. The static operations may run on any.
class MORVANTIS_API xylGuid_generator {
public:
	// An empty registry. A copy has all entries of its own.
	xylGuid_generator();
	xylGuid_generator(const xylGuid_generator& source);
	xylGuid_generator& operator=(const xylGuid_generator& source);
	~xylGuid_generator();

	// Makes a new GUID, stores its text under `key` and returns it. Allocates for a new key.
	//
	// kept: a key that is already registered gets a new GUID as well, in place of the old one.
	xylConstString<64> get_guid(void* key);
	// Stores `text`, which need not be a GUID, in place of what `key` had. Allocates for a new key.
	//
	// kept: a text of 64 characters or more is refused with the warning of xylConstString<64>, and
	// an empty entry remains.
	void register_guid(void* key, const xylString_base& text);
	// Forgets the entry of `key`, if there is one. kept: `text` is not used.
	void deregister_guid(void* key, const xylString_base& text);

	// True for the form with braces and dashes: 38 characters, four dashes in place and hexadecimal
	// digits before them.
	//
	// kept: neither the first character nor anything behind the fourth dash is looked at, so a text
	// may pass here and still be refused by string_to_guid().
	bool is_valid_guid(const xylString_base& text);

	// Writes one of four forms with upper-case digits through target.set(): 38 characters with
	// braces and dashes, 34 with braces, 36 with dashes, 32 with neither.
	static void guid_to_string(xylGuid_type guid, xylString_base& target, bool braces, bool dashes);
	// Reads any of the four forms with digits of either case: an opening brace and each dash may be
	// missing. What follows the last digit is not looked at.
	//
	// `text`  terminated; nothing behind its terminator is read.
	// Throws std::domain_error("Invalid character in GUID") where a digit should stand and none
	// does.
	static xylGuid_type string_to_guid(const char* text);

	xylConstString<64> invalid_guid_; // "*INVALID-GUID*" from construction on
	xylMap<void*, xylConstString<64>, eastl::less<void*>, eastl::allocator> guids_; // the registry

private:
	// The value of a hexadecimal digit of either case; throws as string_to_guid() for others.
	static int parse_hex_digit(char c);
	static xylGuid_type make_guid_helper(const char* text);
};

// The host's generator: the library neither makes, reads nor writes it. Null at load.
extern MORVANTIS_API xylGuid_generator* xyl_guid_generator_ptr;
