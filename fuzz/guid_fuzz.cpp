// The two readers of GUID texts, on texts of any bytes: what is accepted reads back equal in each
// form, and nothing behind a terminator is read.
#include "input.h"

#include <morvantis/core/xylguid_generator.h>
#include <morvantis/strings/xylvarstring.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace {

void check_forms(const xylGuid_type& guid) {
	for (int form = 0; form < 4; ++form) {
		xylConstString<64> text;
		xylGuid_generator::guid_to_string(guid, text, form & 1, form & 2);
		require(xylGuid_generator::string_to_guid(text.char_p()) == guid);
		static xylGuid_generator generator;
		require(generator.is_valid_guid(text) == (form == 3));
	}
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	// A block of exactly the text's size, so that a byte too far is seen.
	const std::unique_ptr<char[]> text(new char[size + 1]);
	if (size > 0) std::memcpy(text.get(), data, size);
	text[size] = 0;

	try {
		check_forms(xylGuid_generator::string_to_guid(text.get()));
	} catch (const std::domain_error& error) {
		require(std::strcmp(error.what(), "Invalid character in GUID") == 0);
	}
	const xylVarString string(text.get());
	static xylGuid_generator generator;
	if (generator.is_valid_guid(string)) require(string.length() == 38 && string[9] == '-');
	return 0;
}
