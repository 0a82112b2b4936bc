#include <morvantis/io/xylfile.h>

#include <morvantis/core/legacy_format.h>
#include <morvantis/io/open_file.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/platform/system/file.h>

#include <cerrno>
#include <cstdarg>

namespace {

constexpr size_t stack_text_size = 4096;              // bytes of a printed text that needs no heap
constexpr size_t largest_text_size = size_t{1} << 31; // the count is an int

int write_text(FILE* file, const char* text, int length) {
	const size_t size = static_cast<size_t>(length);
	return std::fwrite(text, 1, size, file) == size ? length : -1;
}

// Prints a text of more than the stack's buffer by trying twice the size until it fits.
int print_long(FILE* file, const char* format, va_list arguments) {
	for (size_t size = 2 * stack_text_size; size <= largest_text_size; size *= 2) {
		char* text = static_cast<char*>(xyl_heap_allocate(size));
		if (!text) return -1;
		va_list again;
		va_copy(again, arguments);
		const int length = format_bounded(text, size, format, again);
		va_end(again);
		const int result = length < 0 ? -1 : write_text(file, text, length);
		xyl_heap_free(text);
		if (length >= 0) return result;
	}
	return -1;
}

// The target goes as what it is: the run-time takes it back out as the directive says.
template <typename Value> int scan_one(FILE* file, const char* format, Value* target) {
	// Through a pointer, since the format is the caller's and nothing can be checked here.
	int (*const scan_stream)(FILE*, const char*, ...) = std::fscanf;
	return scan_stream(file, format, target);
}

} // namespace

std::atomic<int> xylFile::open_files_count_ = 0;

xylFile::xylFile(const char* name, const char* mode) { open(name, mode); }

xylFile::~xylFile() { close(); }

int xylFile::open(const char* name, const char* mode) {
	file = os::open_stream(final_path(name).char_p(), mode);
	if (!file) return errno;
	++open_files_count_;
	return 0;
}

int xylFile::reopen(const char* name, const char* mode) {
	file = os::reopen_stream(final_path(name).char_p(), mode, file);
	return file ? 0 : errno;
}

bool xylFile::close() {
	if (!file) return false;
	const bool is_closed = std::fclose(file) == 0;
	file = nullptr;
	--open_files_count_;
	return is_closed;
}

int xylFile::print(const char* format, ...) {
	va_list arguments, again;
	va_start(arguments, format);
	va_copy(again, arguments);
	char text[stack_text_size];
	const int length = format_bounded(text, sizeof(text), format, arguments);
	const int result =
		length < 0 ? print_long(file, format, again) : write_text(file, text, length);
	va_end(again);
	va_end(arguments);
	return result;
}

int xylFile::scan(const char* format, char* target) { return scan_one(file, format, target); }
int xylFile::scan(const char* format, int* target) { return scan_one(file, format, target); }
int xylFile::scan(const char* format, float* target) { return scan_one(file, format, target); }
int xylFile::scan(const char* format, double* target) { return scan_one(file, format, target); }

char* xylFile::gets(char* dst, int size) { return std::fgets(dst, size, file); }

char xylFile::getc() { return static_cast<char>(std::fgetc(file)); }

int xylFile::putc(char c) { return std::fputc(c, file); }

int xylFile::puts(const char* text) { return std::fputs(text, file); }

bool xylFile::eof() const { return std::feof(file) != 0; }

xylUInt64 xylFile::tell() const { return static_cast<xylUInt64>(os::tell_stream(file)); }

int xylFile::seek(xylUInt64 offset, int origin) {
	return os::seek_stream(file, static_cast<xylInt64>(offset), origin);
}

xylUInt64 xylFile::read(void* dst, xylUInt64 size, xylUInt64 count) {
	return std::fread(dst, size, count, file);
}

xylUInt64 xylFile::write(const void* src, xylUInt64 size, xylUInt64 count) {
	return std::fwrite(src, size, count, file);
}

int xylFile::flush() { return std::fflush(file); }

xylUInt64 xylFile::get_file_size() {
	const xylUInt64 position = tell();
	seek(0, SEEK_END);
	const xylUInt64 size = tell();
	seek(position, SEEK_SET);
	return size;
}
