#include <morvantis/platform/system/path.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A text in a buffer that notes when it ran over.
class Bounded_path {
public:
	Bounded_path(char* buffer, size_t size) : buffer_(buffer), size_(size) { buffer_[0] = 0; }

	void append(const char* text, size_t count) {
		for (size_t i = 0; i < count; ++i, ++length_) {
			if (length_ + 1 < size_) buffer_[length_] = text[i];
		}
		buffer_[length_ < size_ ? length_ : size_ - 1] = 0;
	}

	// Takes the last "/name" off; the root keeps nothing. Only of a text that fits, which is what
	// there is to look at: a longer one has failed already.
	void remove_last() {
		if (length_ >= size_) return;
		while (length_ > 0 && buffer_[--length_] != '/') {
		}
		buffer_[length_] = 0;
	}

	size_t length() const { return length_; }
	bool ends_in_separator() const {
		return length_ > 0 && length_ < size_ && buffer_[length_ - 1] == '/';
	}

private:
	char* buffer_;
	size_t size_;
	size_t length_ = 0; // as it would be without the limit
};

// Appends the parts of `path`, each with its separator in front.
void append_parts(Bounded_path& result, const char* path) {
	while (*path) {
		path += std::strspn(path, "/");
		const size_t count = std::strcspn(path, "/");
		if (count == 2 && path[0] == '.' && path[1] == '.') {
			result.remove_last();
		} else if (count > 0 && !(count == 1 && path[0] == '.')) {
			result.append("/", 1);
			result.append(path, count);
		}
		path += count;
	}
}

} // namespace

size_t os::temporary_folder(char* buffer, size_t size) {
	const char* folder = std::getenv("TMPDIR");
	if (!folder || !folder[0]) folder = "/tmp";
	Bounded_path result(buffer, size);
	result.append(folder, std::strlen(folder));
	if (!result.ends_in_separator()) result.append("/", 1);
	return result.length();
}

size_t os::executable_path(char* buffer, size_t size) {
	// Not of the process, whose first thread may have ended and have no program any more.
	const ssize_t count = readlink("/proc/thread-self/exe", buffer, size);
	if (count < 0) {
		buffer[0] = 0;
		return 0;
	}
	const size_t length = static_cast<size_t>(count);
	buffer[length < size ? length : size - 1] = 0;
	return length;
}

// By names alone, like the other system: std::filesystem's form of this allocates.
size_t os::absolute_path(const char* path, char* buffer, size_t size) {
	Bounded_path result(buffer, size);
	if (!path[0]) return 0;
	if (path[0] != '/') {
		char folder[PATH_MAX];
		if (!getcwd(folder, sizeof(folder))) return 0;
		append_parts(result, folder);
	}
	append_parts(result, path);
	if (result.length() == 0 || path[std::strlen(path) - 1] == '/') result.append("/", 1);
	return result.length();
}

const char* os::file_name(const char* path) {
	const char* separator = std::strrchr(path, '/');
	return separator ? separator + 1 : path;
}

os::Path_kind os::path_kind(const char* path) {
	struct stat facts;
	if (stat(path, &facts) != 0) return Path_kind::missing;
	return S_ISDIR(facts.st_mode) ? Path_kind::folder : Path_kind::file;
}

bool os::modification_time(const char* path, xylInt64* seconds) {
	struct stat facts;
	if (stat(path, &facts) != 0) return false;
	*seconds = facts.st_mtime;
	return true;
}

bool os::create_folder(const char* path) { return mkdir(path, 0777) == 0; }

bool os::delete_tree(const char* path) {
	// A separator behind a link's name would lead to what the link points at.
	std::string tree(path);
	while (tree.size() > 1 && tree.back() == '/') tree.pop_back();
	std::error_code failure;
	const auto count = std::filesystem::remove_all(tree, failure);
	if (!failure && count > 0) return true;
	errno = failure ? failure.value() : ENOENT;
	return false;
}
