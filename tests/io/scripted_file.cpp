#include "scripted_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

Scripted_file scripted_file;

namespace {

xylInt64 transfer(const void* memory, xylUInt32 size) {
	scripted_file.pieces.push_back({memory, size});
	if (scripted_file.transfers.empty()) return size;
	const xylInt64 count = scripted_file.transfers.front();
	scripted_file.transfers.pop_front();
	return count;
}

} // namespace

void* os::open_file(const char* path, const File_request& request) {
	scripted_file.path = path;
	scripted_file.request = request;
	return scripted_file.handle;
}

bool os::close_file(void*) {
	scripted_file.endings += 'c';
	return scripted_file.closes;
}

xylInt64 os::read_file(void*, void* target, xylUInt32 size) { return transfer(target, size); }

xylInt64 os::write_file(void*, const void* source, xylUInt32 size) {
	return transfer(source, size);
}

bool os::is_interrupted() { return scripted_file.interruptions-- > 0; }

xylInt64 os::seek_file(void*, xylUInt64 offset, File_origin origin) {
	scripted_file.offset = offset;
	scripted_file.origin = origin;
	return scripted_file.position;
}

bool os::file_size(void*, xylUInt64* size) {
	if (scripted_file.has_size) *size = scripted_file.size;
	return scripted_file.has_size;
}

void os::start_overlapped_read(void*, void* overlapped, xylUInt64 offset, void* target,
                               xylUInt32 size) {
	const unsigned char* record = static_cast<unsigned char*>(overlapped);
	scripted_file.record_was_clear =
		std::all_of(record, record + overlapped_size, [](unsigned char byte) { return byte == 0; });
	std::memset(overlapped, 0xFF, overlapped_size);
	scripted_file.offset = offset;
	scripted_file.pieces.push_back({target, size});
}

os::Overlapped_state os::query_overlapped(void*, void*, bool wait, xylUInt32* transferred) {
	scripted_file.waited = wait;
	*transferred = scripted_file.overlapped_count;
	return scripted_file.state;
}

void os::give_up_overlapped_read(void*, void*) { scripted_file.endings += 'g'; }

std::FILE* os::open_stream(const char* path, const char*) {
	scripted_file.path = path;
	return std::exchange(scripted_file.stream, nullptr);
}

std::FILE* os::reopen_stream(const char* path, const char*, std::FILE*) {
	scripted_file.path = path;
	return nullptr;
}

xylInt64 os::tell_stream(std::FILE*) { return static_cast<xylInt64>(scripted_file.size); }

int os::seek_stream(std::FILE*, xylInt64, int) { return 0; }
