#include <morvantis/platform/system/linux/symbol_files.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <new>
#include <string_view>

#include <dirent.h>

namespace {

constexpr size_t id_size = 16;
constexpr char system_folder[] = "/usr/lib/debug";

std::string_view file_name(std::string_view path) { return path.substr(path.rfind('/') + 1); }

// "" for what lies in the root, "." for a name alone.
std::string_view folder_of(std::string_view path) {
	const size_t slash = path.rfind('/');
	return slash == std::string_view::npos ? "." : path.substr(0, slash);
}

bool is_folder(const char* path) {
	struct stat facts;
	return stat(path, &facts) == 0 && S_ISDIR(facts.st_mode);
}

bool is_same_time(const timespec& a, const timespec& b) {
	return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool has_identity(const unsigned char* guid) {
	return std::any_of(guid, guid + id_size, [](unsigned char byte) { return byte != 0; });
}

// A path put together of parts; one that is too long is empty, so that nothing is found there.
struct Path {
	char text[1024];

	Path(std::initializer_list<std::string_view> parts) : text{} {
		size_t length = 0;
		for (const std::string_view part : parts) {
			if (part.size() >= sizeof(text) - length) {
				length = 0;
				break;
			}
			std::memcpy(text + length, part.data(), part.size());
			length += part.size();
		}
		text[length] = 0;
	}
};

// The folder as it is written, or if there is none, with backslashes taken for slashes: some parts
// of a search path are put together with them on every system.
Path with_slashes(Path folder) {
	if (!is_folder(folder.text))
		std::replace(std::begin(folder.text), std::end(folder.text), '\\', '/');
	return folder;
}

// The folder's name in a symbol store: the GUID's three numbers and eight bytes, then the age.
void format_store_key(const unsigned char* guid, xylUInt32 age, char (&text)[48]) {
	static constexpr int order[id_size] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
	for (size_t i = 0; i < id_size; ++i) std::snprintf(text + 2 * i, 3, "%02X", guid[order[i]]);
	std::snprintf(text + 2 * id_size, sizeof(text) - 2 * id_size, "%X", age);
}

void format_id(const unsigned char* guid, char (&digits)[2 * id_size + 1]) {
	for (size_t i = 0; i < id_size; ++i) std::snprintf(digits + 2 * i, 3, "%02x", guid[i]);
}

// Whether `name` may be the rest of a build id, with its extension, of which `rest` is known. An
// identity keeps 16 bytes; ids are mostly 20 long, and shorter ones are filled up with zeros.
bool is_rest_of_id(std::string_view name, std::string_view rest) {
	static constexpr std::string_view extension = ".debug";
	if (!name.ends_with(extension)) return false;
	name.remove_suffix(extension.size());
	const size_t common = std::min(rest.size(), name.size());
	return name.substr(0, common) == rest.substr(0, common) &&
	       rest.find_first_not_of('0', common) == std::string_view::npos;
}

} // namespace

// One search under way: tries files until one has debug information.
struct os::Symbol_files::Search {
	Symbol_files& files;
	const Wanted_build& build;
	std::string_view name;
	char (&found)[1024];
	char key[48];                    // the folder in a symbol store
	char id_digits[2 * id_size + 1]; // the build id as folder and file names have it
	bool has_names;                  // `found` is a file with a symbol table

	// True: the search is over.
	bool try_file(const char* path) {
		Known_file* const file = files.know(path, nullptr);
		if (!file) return false;
		if (!is_of(*file, build) || (!file->has_debug_info && !file->has_symbol_table)) {
			files.close(*file);
			return false;
		}
		const bool is_better = file->has_debug_info || (file->has_symbol_table && !has_names);
		if (is_better) std::snprintf(found, sizeof(found), "%s", path);
		has_names = has_names || file->has_symbol_table;
		return file->has_debug_info;
	}

	bool try_store(std::string_view folder) {
		const Path entry{folder, "/", name, "/", key};
		if (!is_folder(entry.text)) return false;
		return try_file(Path{entry.text, "/", name}.text) ||
		       try_file(Path{entry.text, "/", name, ".debug"}.text);
	}

	bool try_build_id(std::string_view folder) {
		const Path group{folder, "/.build-id/", std::string_view(id_digits, 2)};
		DIR* const list = opendir(group.text);
		if (!list) return false;
		bool is_over = false;
		while (!is_over) {
			const dirent* const entry = readdir(list);
			if (!entry) break;
			if (!is_rest_of_id(entry->d_name, std::string_view(id_digits).substr(2))) continue;
			is_over = try_file(Path{group.text, "/", entry->d_name}.text);
		}
		closedir(list);
		return is_over;
	}

	bool try_debug_files(std::string_view folder) {
		return try_file(Path{folder, "/", name, ".debug"}.text) ||
		       try_file(Path{folder, "/.debug/", name, ".debug"}.text);
	}

	bool try_folder(std::string_view folder) {
		if (!is_folder(Path{folder}.text)) return false;
		return try_file(Path{folder, "/", name}.text) || try_debug_files(folder) ||
		       try_build_id(folder) || try_store(folder);
	}

	bool try_element(std::string_view element) {
		static constexpr std::string_view server = "SRV*";
		if (element.empty() || element == "SRV") return false;
		if (!element.starts_with(server)) return try_folder(with_slashes(Path{element}).text);
		for (std::string_view rest = element.substr(server.size()); !rest.empty();) {
			const std::string_view part = rest.substr(0, rest.find('*'));
			rest.remove_prefix(std::min(part.size() + 1, rest.size()));
			if (!part.empty() && try_store(with_slashes(Path{part}).text)) return true;
		}
		return false;
	}

	bool try_elements(std::string_view elements) {
		while (!elements.empty()) {
			const std::string_view element = elements.substr(0, elements.find(';'));
			if (try_element(element)) return true;
			elements.remove_prefix(std::min(element.size() + 1, elements.size()));
		}
		return false;
	}

	bool try_image() {
		if (build.image_path[0] == 0) return false;
		const std::string_view folder = folder_of(build.image_path);
		return try_debug_files(Path{system_folder, folder}.text) || try_debug_files(folder) ||
		       try_file(build.image_path);
	}
};

bool os::Symbol_files::is_of(const Known_file& file, const Wanted_build& build) {
	return file.has_build_id && std::memcmp(file.build_id, build.guid, id_size) == 0;
}

bool os::Symbol_files::find(const char* search_paths, const Wanted_build& build,
                            char (&found)[1024]) {
	std::string_view name = file_name(build.name);
	if (name.empty()) name = file_name(build.image_path);
	if (!has_identity(build.guid) || name.empty()) return false;
	Search search{*this, build, name, found, {}, {}, false};
	format_store_key(build.guid, build.age, search.key);
	format_id(build.guid, search.id_digits);
	return search.try_elements(search_paths) || search.try_folder(system_folder) ||
	       search.try_image() || search.has_names;
}

os::Elf_symbols* os::Symbol_files::open(const char* path, const Wanted_build& build) {
	return open_beside(nullptr, path, build);
}

os::Elf_symbols* os::Symbol_files::open_beside(const Elf_symbols* kept, const char* path,
                                               const Wanted_build& build) {
	if (!has_identity(build.guid)) return nullptr;
	Known_file* const file = know(path, kept);
	if (!file) return nullptr;
	if (is_of(*file, build) && !file->symbols) open(*file, kept);
	if (!is_of(*file, build)) close(*file); // it may have been replaced in between
	return file->symbols;
}

// What is known of the file at `path`, read now unless it is unchanged since the last time. Null:
// no readable file.
os::Symbol_files::Known_file* os::Symbol_files::know(const char* path, const Elf_symbols* kept) {
	struct stat facts;
	const bool is_there = path[0] != 0 && stat(path, &facts) == 0 && S_ISREG(facts.st_mode);
	Known_file* file = std::find_if(files_, files_ + count_, [path](const Known_file& known) {
		return std::strcmp(known.path, path) == 0;
	});
	const bool is_known = file != files_ + count_;
	if (is_known && is_there && file->device == facts.st_dev && file->inode == facts.st_ino &&
	    file->size == facts.st_size && is_same_time(file->changed, facts.st_mtim)) {
		file->last_use = ++uses_;
		return file;
	}
	if (is_known && kept && file->symbols == kept) return file; // changed, but in use
	if (is_known) forget(*file);
	if (!is_there) return nullptr;
	file = place_for_new();
	*file = Known_file{};
	file->path = strdup(path);
	if (!file->path) return nullptr;
	++count_;
	file->last_use = ++uses_;
	file->device = facts.st_dev;
	file->inode = facts.st_ino;
	file->size = facts.st_size;
	file->changed = facts.st_mtim;
	open(*file, kept);
	return file;
}

// Opens a file and takes down what it is. One that is no ELF file isn't open afterwards.
void os::Symbol_files::open(Known_file& file, const Elf_symbols* kept) {
	file.has_build_id = file.has_debug_info = file.has_symbol_table = false;
	make_room_for_open(kept);
	void* const memory = std::malloc(sizeof(Elf_symbols));
	if (!memory) return;
	file.symbols = new (memory) Elf_symbols;
	if (!file.symbols->open(file.path)) return close(file);
	file.has_debug_info = file.symbols->has_debug_info();
	file.has_symbol_table = file.symbols->has_symbol_table();
	file.has_build_id = file.symbols->build_id() != nullptr;
	if (file.has_build_id) std::memcpy(file.build_id, file.symbols->build_id(), id_size);
}

void os::Symbol_files::close(Known_file& file) {
	if (!file.symbols) return;
	file.symbols->~Elf_symbols();
	std::free(file.symbols);
	file.symbols = nullptr;
}

void os::Symbol_files::forget(Known_file& file) {
	close(file);
	std::free(file.path);
	file = files_[--count_];
}

void os::Symbol_files::make_room_for_open(const Elf_symbols* kept) {
	size_t open_count = 0;
	Known_file* oldest = nullptr;
	for (size_t i = 0; i < count_; ++i) {
		if (!files_[i].symbols) continue;
		++open_count;
		if (files_[i].symbols != kept && (!oldest || files_[i].last_use < oldest->last_use))
			oldest = &files_[i];
	}
	if (open_count >= max_open && oldest) close(*oldest);
}

// The slot behind the last file, after the one unused for longest has given way to it if need be.
os::Symbol_files::Known_file* os::Symbol_files::place_for_new() {
	if (count_ == max_known)
		forget(*std::min_element(
			files_, files_ + count_,
			[](const Known_file& a, const Known_file& b) { return a.last_use < b.last_use; }));
	return &files_[count_];
}

void os::Symbol_files::clear() {
	while (count_ > 0) forget(files_[count_ - 1]);
}
