#include <morvantis/platform/system/linux/dump_output.h>

#include <morvantis/platform/system/linux/own_memory.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

// All of it; false on failure.
bool write_all(int file, const char* bytes, size_t size) {
	while (size > 0) {
		const ssize_t count = write(file, bytes, size);
		if (count < 0 && errno == EINTR) continue;
		if (count <= 0) return false;
		bytes += count;
		size -= static_cast<size_t>(count);
	}
	return true;
}

} // namespace

void os::Dump_output::start(int file) {
	file_ = file;
	failed_ = false;
	written_ = used_ = 0;
}

void os::Dump_output::append(const void* bytes, size_t size) {
	const char* from = static_cast<const char*>(bytes);
	while (size > 0) {
		if (room() == 0) flush();
		const size_t count = std::min(size, room());
		std::memcpy(&buffer_[used_], from, count);
		used_ += static_cast<xylUInt32>(count);
		from += count;
		size -= count;
	}
}

void os::Dump_output::align(xylUInt32 alignment) {
	static constexpr char zeros[16]{};
	append(zeros, (0 - position()) & (alignment - 1));
}

xylUInt32 os::Dump_output::append_memory(xylUInt64 address, xylUInt32 size) {
	xylUInt32 copied = 0;
	while (copied < size) {
		if (room() == 0) flush();
		const size_t wanted = std::min<size_t>(size - copied, room());
		const size_t count = read_own_memory(address + copied, &buffer_[used_], wanted);
		used_ += static_cast<xylUInt32>(count);
		copied += static_cast<xylUInt32>(count);
		if (count < wanted) break;
	}
	return copied;
}

xylUInt32 os::Dump_output::append_file(const char* path, xylUInt32 limit) {
	const int source = open(path, O_RDONLY | O_CLOEXEC);
	if (source < 0) return 0;
	xylUInt32 copied = 0;
	while (copied < limit) {
		if (room() == 0) flush();
		const size_t wanted = std::min<size_t>(limit - copied, room());
		const ssize_t count = read(source, &buffer_[used_], wanted);
		if (count < 0 && errno == EINTR) continue;
		if (count <= 0) break;
		used_ += static_cast<xylUInt32>(count);
		copied += static_cast<xylUInt32>(count);
	}
	close(source);
	return copied;
}

void os::Dump_output::flush() {
	failed_ = failed_ || !write_all(file_, buffer_.data(), used_);
	written_ += used_;
	used_ = 0;
}

void os::Dump_output::write_at(xylUInt32 position, const void* bytes, size_t size) {
	if (failed_ || lseek(file_, position, SEEK_SET) < 0) return;
	failed_ = !write_all(file_, static_cast<const char*>(bytes), size);
}

void os::Dump_output::finish() {
	if (failed_ && ftruncate(file_, 0) != 0) return; // and nobody to tell
}
