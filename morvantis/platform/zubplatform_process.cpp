// Other processes and the desktop's shell.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/platform/system/path.h>
#include <morvantis/platform/system/process.h>
#include <morvantis/platform/system/shell.h>
#include <morvantis/strings/xylvarstring.h>

#include <cstring>

namespace {

constexpr size_t area_size = 1024; // bytes of each text that goes to the system

// Appends each text up to the null entry, with `separator` behind it. False when the area, which is
// zeroed at the start, can't hold them with a zero byte behind.
bool join(char* const* texts, const char* separator, char (&area)[area_size]) {
	size_t length = 0;
	for (; *texts; ++texts) {
		for (const char* part : {static_cast<const char*>(*texts), separator}) {
			const size_t count = std::strlen(part);
			if (count >= area_size - length) return false;
			std::memcpy(area + length, part, count);
			length += count;
		}
	}
	return true;
}

// The final path of `path` seen from the current folder, which an empty one means; an empty text
// when it doesn't fit.
void make_absolute(const xylString_base& path, char (&area)[area_size]) {
	const xylConstString<512> final_path = zubPlatform::convert_base_path_to_final(path);
	const char* text = final_path.is_empty() ? "." : final_path.char_p();
	const size_t length = os::absolute_path(text, area, area_size);
	if (length == 0 || length >= area_size) area[0] = 0;
}

} // namespace

int zubPlatform::create_process(unsigned int& process_id, const char*, char* const* arguments,
                                char* const* environment, unsigned int creation_flags, bool wait) {
	process_id = 0;
	char folder[area_size]{};
	os::current_folder(folder, sizeof(folder));
	char command_line[area_size]{};
	// kept: a blank behind the last argument as well, and no quotes.
	if (arguments && !join(arguments, " ", command_line)) return -1;
	struct {
		char text[area_size]{};
		char end_of_block = 0;
	} block;
	// kept: nothing between the entries, so the block holds one text.
	if (environment && !join(environment, "", block.text)) return -1;
	os::Child_process child;
	const int result = os::start_process(command_line, creation_flags,
	                                     environment ? block.text : nullptr, folder, &child);
	if (result == 0 || child.id == 0) return -1;
	process_id = child.id;
	if (wait) os::wait_for_process(child);
	// kept: neither handle is closed.
	return result;
}

void zubPlatform::shell_execute(const char* operation, const char* file) {
	os::shell_execute(operation, file);
}

void zubPlatform::open_with_default_app(const xylString_base& path) {
	if (!file_exists(path)) return;
	char absolute[area_size]{};
	make_absolute(path, absolute);
	if (file_exists(xylVarString(absolute))) os::shell_execute("open", absolute);
}

void zubPlatform::open_folder_and_select_items(const xylVarString& folder,
                                               const xylVarString& item) {
	char absolute_folder[area_size]{};
	char absolute_item[area_size]{};
	make_absolute(folder, absolute_folder);
	make_absolute(item, absolute_item);
	os::open_folder_and_select(absolute_folder, absolute_item);
}
