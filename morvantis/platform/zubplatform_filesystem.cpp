// Folders and files by base-relative paths.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/platform/system/path.h>

#include <cstdlib>
#include <cstring>

bool zubPlatform::create_directory(const xylString_base& path) {
	return os::create_folder(convert_base_path_to_final(path).char_p());
}

bool zubPlatform::remove_directory(const xylString_base& path) {
	const xylConstString<512> final_path = convert_base_path_to_final(path);
	char area[280]{};
	// Two zero bytes have to fit behind the path: the system takes a list of paths.
	const size_t length = std::strlen(final_path.char_p());
	if (length > sizeof(area) - 2) std::abort();
	std::memcpy(area, final_path.char_p(), length);
	return os::delete_tree(area);
}

bool zubPlatform::is_directory_exists(const xylString_base& path) {
	return os::path_kind(convert_base_path_to_final(path).char_p()) == os::Path_kind::folder;
}

bool zubPlatform::file_exists(const xylString_base& path) {
	return os::path_kind(convert_base_path_to_final(path).char_p()) == os::Path_kind::file;
}

xylInt64 zubPlatform::get_file_last_modification_date(const xylString_base& path) {
	xylInt64 seconds = -1;
	os::modification_time(path.char_p(), &seconds);
	return seconds;
}
