#include <morvantis/platform/system/file.h>

#include <cerrno>
#include <cstdint>
#include <new>

#include <aio.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int descriptor_of(void* handle) { return static_cast<int>(reinterpret_cast<intptr_t>(handle)); }

// Access mode 3 is the kernel's own: a descriptor for questions, neither for reading nor writing.
int access_flags(const os::File_request& request) {
	if (request.read) return request.write ? O_RDWR : O_RDONLY;
	return request.write ? O_WRONLY : O_ACCMODE;
}

bool is_folder(int descriptor) {
	struct stat facts;
	return fstat(descriptor, &facts) == 0 && S_ISDIR(facts.st_mode);
}

// Keeps a stream unless it leads to a folder, which the run-time would open for reading.
std::FILE* without_folder(std::FILE* stream) {
	if (!stream || !is_folder(fileno(stream))) return stream;
	std::fclose(stream);
	errno = EISDIR;
	return nullptr;
}

// A read and what is kept of it: POSIX lets the result be fetched only once. (The block is a base
// and not a member, since it ends in an empty array, which a member must not.)
//
// Asynchronous reads are for what has positions. Of a pipe, where a read may take for ever and a
// helper thread that is in it can't be called back, bytes are taken when somebody asks for them.
struct Read_record : aiocb {
	enum { none, under_way, waiting_for_bytes, completed, failed } state;
	int error;       // of a failed one
	xylUInt32 count; // of a completed one
};
static_assert(sizeof(Read_record) <= os::overlapped_size && alignof(Read_record) <= 8);
static_assert(Read_record::none == 0, "a zeroed record has no read");

Read_record& record_at(void* overlapped) {
	return *std::launder(static_cast<Read_record*>(overlapped));
}

// The end of a read: a count, or -1 and the error's number. No bytes are the end of the file, for
// which there is no number of its own.
void finish(Read_record& read, ssize_t count, int error) {
	const bool is_at_end = count == 0 && read.aio_nbytes > 0;
	read.state = count < 0 || is_at_end ? Read_record::failed : Read_record::completed;
	read.error = is_at_end ? ENODATA : error;
	read.count = count < 0 ? 0 : static_cast<xylUInt32>(count);
}

// Ends an asynchronous read that has ended by now, or with `wait`, in any case.
void collect(Read_record& read, bool wait) {
	int error = aio_error(&read);
	while (wait && error == EINPROGRESS) {
		const aiocb* const blocks[] = {&read};
		aio_suspend(blocks, 1, nullptr);
		error = aio_error(&read);
	}
	if (error != EINPROGRESS) finish(read, aio_return(&read), error);
}

// Takes what a pipe has by now, or with `wait`, what it gets first.
void take_bytes(Read_record& read, bool wait) {
	pollfd question{read.aio_fildes, POLLIN, 0};
	if (TEMP_FAILURE_RETRY(poll(&question, 1, wait ? -1 : 0)) == 0) return;
	const ssize_t count = TEMP_FAILURE_RETRY(
		::read(read.aio_fildes, const_cast<void*>(read.aio_buf), read.aio_nbytes));
	finish(read, count, errno);
}

} // namespace

void* os::open_file(const char* path, const File_request& request) {
	static constexpr int creation[] = {-1, O_CREAT | O_EXCL, O_CREAT | O_TRUNC, 0};
	if (request.disposition < 1 || request.disposition > 3) {
		errno = EINVAL;
		return no_file();
	}
	const int flags = access_flags(request) | creation[request.disposition] | O_CLOEXEC;
	const mode_t mode = request.read_only ? 0444 : 0666;
	int descriptor = -1;
	do { // opening may wait, as for the other end of a pipe, and a signal ends that
		descriptor = open(path, flags, mode);
	} while (descriptor < 0 && errno == EINTR);
	if (descriptor < 0) return no_file();
	if (!request.backup_semantics && is_folder(descriptor)) {
		close(descriptor);
		errno = EISDIR;
		return no_file();
	}
	if (request.sequential) posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
	return reinterpret_cast<void*>(static_cast<intptr_t>(descriptor));
}

bool os::close_file(void* handle) { return close(descriptor_of(handle)) == 0; }

xylInt64 os::read_file(void* handle, void* target, xylUInt32 size) {
	return read(descriptor_of(handle), target, size);
}

xylInt64 os::write_file(void* handle, const void* source, xylUInt32 size) {
	return write(descriptor_of(handle), source, size);
}

bool os::is_interrupted() { return errno == EINTR; }

xylInt64 os::seek_file(void* handle, xylUInt64 offset, File_origin origin) {
	static constexpr int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
	return lseek(descriptor_of(handle), static_cast<off_t>(offset),
	             whence[static_cast<int>(origin)]);
}

bool os::file_size(void* handle, xylUInt64* size) {
	struct stat facts;
	if (fstat(descriptor_of(handle), &facts) != 0) return false;
	*size = static_cast<xylUInt64>(facts.st_size);
	return true;
}

void os::start_overlapped_read(void* handle, void* overlapped, xylUInt64 offset, void* target,
                               xylUInt32 size) {
	Read_record& read = *new (overlapped) Read_record{};
	read.aio_fildes = descriptor_of(handle);
	read.aio_offset = static_cast<off_t>(offset);
	read.aio_buf = target;
	read.aio_nbytes = size;
	read.aio_sigevent.sigev_notify = SIGEV_NONE;
	struct stat facts;
	if (fstat(read.aio_fildes, &facts) != 0) return finish(read, -1, errno);
	const bool has_positions = S_ISREG(facts.st_mode) || S_ISBLK(facts.st_mode);
	read.state = has_positions ? Read_record::under_way : Read_record::waiting_for_bytes;
	if (has_positions && aio_read(&read) != 0) finish(read, -1, errno);
}

os::Overlapped_state os::query_overlapped(void*, void* overlapped, bool wait,
                                          xylUInt32* transferred) {
	Read_record& read = record_at(overlapped);
	if (read.state == Read_record::under_way) collect(read, wait);
	if (read.state == Read_record::waiting_for_bytes) take_bytes(read, wait);
	switch (read.state) {
	case Read_record::none:
	case Read_record::completed:
		*transferred = read.count;
		return Overlapped_state::completed;
	case Read_record::failed:
		errno = read.error;
		return Overlapped_state::failed;
	default:
		errno = EINPROGRESS;
		return Overlapped_state::pending;
	}
}

void os::give_up_overlapped_read(void*, void* overlapped) {
	Read_record& read = record_at(overlapped);
	if (read.state == Read_record::under_way) {
		aio_cancel(read.aio_fildes, &read);
		collect(read, true);
	}
	if (read.state == Read_record::waiting_for_bytes) finish(read, -1, ECANCELED);
}

std::FILE* os::open_stream(const char* path, const char* mode) {
	for (;;) {
		std::FILE* const stream = std::fopen(path, mode);
		if (stream || errno != EINTR) return without_folder(stream);
	}
}

std::FILE* os::reopen_stream(const char* path, const char* mode, std::FILE* stream) {
	return without_folder(std::freopen(path, mode, stream));
}

xylInt64 os::tell_stream(std::FILE* stream) { return ftello(stream); }

int os::seek_stream(std::FILE* stream, xylInt64 offset, int origin) {
	return fseeko(stream, offset, origin);
}
