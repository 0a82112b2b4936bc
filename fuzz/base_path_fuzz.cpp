// Path conversions on texts of any bytes, up to the limits of each, beside their description on
// standard strings.
#include "input.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <cstdint>
#include <string>

namespace {

bool is(const xylString_base& text, const std::string& expected) {
	return text.char_p() == expected && text.length() == static_cast<int>(expected.size());
}

std::string relative_form(const std::string& path) {
	if (path.rfind("$BASE/", 0) == 0) return path;
	size_t tail = path.find("/NERU/");
	if (tail != std::string::npos) {
		tail += 6;
	} else {
		tail = path.find("/Wolmes/");
		if (tail == std::string::npos) return "";
		tail += 8;
	}
	const std::string result = "$BASE/" + path.substr(tail);
	return result.size() < 127 ? result : "$BASE/";
}

void check_base_form(const std::string& path) {
	const size_t at = path.find("../../");
	std::string expected = path;
	size_t length = path.size();
	if (at != std::string::npos) {
		const std::string tail = path.substr(at + 6, 6);
		expected = path.substr(0, at) + "$BASE/" + tail;
		length = at + (tail.empty() ? 6 : 12); // a shorter tail counts as six
	}
	if (length > 255) return; // ends the process
	const xylConstString<256> base =
		zubPlatform::convert_final_to_base_path(xylVarString(path.c_str()));
	require(base.char_p() == expected && base.length() == static_cast<int>(length));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	// A text ends at its first zero byte.
	std::string path(reinterpret_cast<const char*>(data), size);
	path.resize(path.find('\0') == std::string::npos ? size : path.find('\0'));
	if (path.size() > 279) path.resize(279);
	const xylVarString text(path.c_str());

	const bool has_prefix = path.find("$BASE/") != std::string::npos;
	require(is(zubPlatform::convert_base_path_to_final(text),
	           has_prefix ? "../../" + path.substr(6) : path));
	require(zubPlatform::is_base_relative(text) == (path.rfind("$BASE/", 0) == 0));
	if (path.size() < 256) check_base_form(path);
	if (path.size() < 128 && path.size() > 0) {
		// Short enough to fit with any current folder of a fuzz run in front of it.
		const xylConstString<256> absolute = zubPlatform::convert_base_path_to_absolute_path(text);
		require(absolute.char_p()[0] == '/' || absolute.is_empty());
	}
	// A tail of 128 characters ends the process, and none of a path this long is longer.
	if (path.size() < 128 + 6)
		require(is(zubPlatform::get_base_relative_path(text), relative_form(path)));
	return 0;
}
