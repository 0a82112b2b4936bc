// Base paths: conversions between "$BASE/", final and absolute paths. Nothing here allocates but
// where the result is a xylVarString: both prefixes have six characters, so a conversion is a copy
// into a fixed string with six of its characters written over.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/platform/system/path.h>
#include <morvantis/strings/xylvarstring.h>

#include <cstring>

namespace {

constexpr char base_prefix[] = "$BASE/";
constexpr char platform_base[] = "../../";
constexpr size_t prefix_length = 6;
static_assert(sizeof(base_prefix) == prefix_length + 1);
static_assert(sizeof(platform_base) == prefix_length + 1);

// Names of the repository's folder, in the order they are looked for.
constexpr const char* root_folders[] = {"/NERU/", "/Wolmes/"};

constexpr size_t system_path_size = 280; // bytes the system may fill with a folder of its own
constexpr size_t full_path_size = 1024;

} // namespace

xylConstString<16> zubPlatform::get_base_path_prefix() { return base_prefix; }

const char* zubPlatform::get_platform_base() { return platform_base; }

xylConstString<256> zubPlatform::get_temp_path() {
	char buffer[system_path_size]{};
	os::temporary_folder(buffer, sizeof(buffer));
	return buffer;
}

xylConstString<256> zubPlatform::get_executable_path() {
	char buffer[system_path_size + 1]{}; // and the separator to come
	if (os::executable_path(buffer, system_path_size) == 0) return {};
	size_t length = static_cast<size_t>(os::file_name(buffer) - buffer);
	length = length > 0 ? length - 1 : std::strlen(buffer); // kept: no separator, nothing is cut
	std::strcpy(buffer + length, "/");
	return buffer;
}

xylConstString<512> zubPlatform::convert_base_path_to_final(const xylString_base& path) {
	xylConstString<512> result(path);
	// kept: found anywhere, but always the first six characters give way.
	if (std::strstr(result.char_p(), base_prefix)) {
		std::memcpy(&result[0], platform_base, prefix_length);
	}
	return result;
}

xylConstString<256> zubPlatform::convert_base_path_to_absolute_path(const xylString_base& path) {
	xylConstString<256> result(convert_base_path_to_final(path));
	char buffer[full_path_size]{};
	os::absolute_path(result.char_p(), buffer, sizeof(buffer));
	result = buffer;
	result.replace_backslashes();
	return result;
}

xylConstString<256> zubPlatform::convert_final_to_base_path(const xylString_base& path) {
	xylConstString<256> result(path);
	// kept: the fixed string's replacement counts the rest of the path with the length of "$BASE/",
	// so six characters of it stay, and six count where there are fewer.
	result.replace(platform_base, base_prefix);
	return result;
}

bool zubPlatform::is_base_relative(const xylVarString& path) {
	return path.length() >= static_cast<int>(prefix_length) &&
	       std::memcmp(path.char_p(), base_prefix, prefix_length) == 0;
}

xylVarString zubPlatform::get_base_relative_path(const xylVarString& path) {
	if (is_base_relative(path)) return path;
	for (const char* root : root_folders) {
		const char* match = std::strstr(path.char_p(), root);
		if (!match) continue;
		const xylConstString<128> tail(match + std::strlen(root));
		xylConstString<128> result(base_prefix);
		// kept: below 127 in all, one less than the string could hold; a longer tail is dropped.
		if (prefix_length + static_cast<size_t>(tail.length()) < 127) {
			std::strcpy(&result[prefix_length], tail.char_p());
			result.recalculate_length();
		}
		return result;
	}
	return {};
}
