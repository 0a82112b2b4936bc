#include <morvantis/io/stream_files.h>

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylio_stream.h>
#include <morvantis/memory/xylheap.h>

#include <new>

namespace {

// Opens a file for a stream that it gives its name; what an earlier attempt left behind ends.
bool open_stream_file(xylIO_Stream& stream, xylFile*& file_object, const char* name,
                      const char* mode) {
	stream.name = name;
	end_stream_file(file_object);
	file_object = new (xyl_heap_allocate(sizeof(xylFile))) xylFile;
	return file_object->open(name, mode) == 0;
}

} // namespace

void end_stream_file(xylFile*& file_object) {
	if (!file_object) return;
	file_object->~xylFile();
	xyl_heap_free(file_object);
	file_object = nullptr;
}

bool load_stream_file(const Input_file& file, const char* name, const char* mode) {
	file.failed = !open_stream_file(file.stream, file.file_object, name, mode);
	if (file.failed) return false;
	file.stream.buffer.read_file(file.file_object, 0); // all of it
	end_stream_file(file.file_object);
	return true;
}

void close_input_file(const Input_file& file) {
	file.failed = true;
	end_stream_file(file.file_object);
}

int open_output_file(const Output_file& file, const char* name, const char* mode) {
	file.is_opened = open_stream_file(file.stream, file.file_object, name, mode);
	file.failed = !file.is_opened;
	return file.failed ? -1 : 0;
}

int flush_output_file(const Output_file& file) {
	if (!file.is_opened) return 0;
	const auto end = static_cast<unsigned int>(file.stream.buffer.length());
	const unsigned int start = file.stream.flushed_length;
	if (start >= end) return 0;
	const xylUInt64 count = end - start;
	const xylUInt64 written =
		file.file_object->write(file.stream.buffer.char_p() + start, 1, count);
	file.file_object->flush();
	file.stream.flushed_length = end;
	return written < count ? 1 : 0;
}

int close_output_file(const Output_file& file) {
	if (!file.is_opened) return 1;
	int result = file.stream.flush();
	if (result == 0) {
		result = file.file_object->close() ? 1 : 0;
		end_stream_file(file.file_object);
	}
	file.failed = true;
	file.is_opened = false;
	return result;
}
