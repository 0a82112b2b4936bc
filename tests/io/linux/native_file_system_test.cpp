// Answers of files that are Linux's own.
#include "../system_files.h"
#include "temporary_folder.h"

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylnative_file.h>
#include <morvantis/io/xylnative_file_async.h>
#include <morvantis/platform/zubplatform.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr int writing = xylFile_access_read | xylFile_access_write;

int descriptor_of(void* handle) { return static_cast<int>(reinterpret_cast<intptr_t>(handle)); }

TEST(xylNative_file_linux, ModeOfANewFileFollowsReadOnly) {
	const Temporary_folder folder;
	const mode_t mask = umask(022);
	const auto mode_of = [&](const char* name, int mode) {
		xylNative_file file((folder / name).c_str(), writing, xylFile_flag_create_new | mode);
		struct stat facts{};
		EXPECT_EQ(fstat(descriptor_of(file.handle), &facts), 0);
		return facts.st_mode & 0777;
	};
	EXPECT_EQ(mode_of("plain", 0), 0644u);
	EXPECT_EQ(mode_of("read_only", xylFile_flag_read_only), 0444u);
	EXPECT_EQ(mode_of("normal", xylFile_flag_read_only | xylFile_flag_normal), 0644u);
	umask(mask);
}

TEST(xylNative_file_linux, ErrorNumberSaysWhyAFileDidNotOpen) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("file");
	struct Case {
		const char* name;
		std::string path;
		int mode, error;
	};
	const Case cases[] = {
		{"missing", folder / "missing", xylFile_flag_open_existing, ENOENT},
		{"there", path, xylFile_flag_create_new, EEXIST},
		{"folder", folder.path().string(), xylFile_flag_open_existing, EISDIR},
		{"no disposition", path, 0, EINVAL},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylNative_file file;
		errno = 0;
		EXPECT_FALSE(file.open(c.path.c_str(), xylFile_access_read, c.mode));
		EXPECT_EQ(errno, c.error);
	}
	xylFile stream;
	EXPECT_EQ(stream.open(folder.path().c_str(), "rb"), EISDIR);
}

TEST(xylNative_file_linux, ShareBitsHaveNoEffect) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("file");
	xylNative_file first(path.c_str(), writing, xylFile_flag_open_existing);
	xylNative_file second(path.c_str(), writing, xylFile_flag_open_existing);
	EXPECT_TRUE(first.is_valid());
	EXPECT_TRUE(second.is_valid());
}

TEST(xylNative_file_linux, HandlesAreNotInherited) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("file");
	xylNative_file file(path.c_str(), writing, xylFile_flag_open_existing);
	EXPECT_TRUE(fcntl(descriptor_of(file.handle), F_GETFD) & FD_CLOEXEC);
	xylNative_file_async async(path.c_str(), writing, xylFile_flag_open_existing);
	EXPECT_TRUE(fcntl(descriptor_of(async.handle), F_GETFD) & FD_CLOEXEC);
}

TEST(xylNative_file_linux, CloseOfALostDescriptorFails) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("file");
	xylNative_file file(path.c_str(), writing, xylFile_flag_open_existing);
	const int count = xylNative_file::open_files_count_;
	close(descriptor_of(file.handle));
	EXPECT_FALSE(file.close());
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(xylNative_file::open_files_count_, count - 1) << "counted all the same";
}

TEST(xylNative_file_linux, FullDiskShowsWhenTheStreamCloses) {
	xylFile file("/dev/full", "wb");
	ASSERT_TRUE(file.is_valid());
	EXPECT_GE(file.puts("text"), 0) << "in the buffer";
	EXPECT_EQ(file.flush(), EOF);
	EXPECT_GE(file.puts("more"), 0);
	EXPECT_FALSE(file.close());
	EXPECT_FALSE(file.is_valid());
}

// Signals that end what waits, and at the fifth of them somebody opens the other end of a fifo.
class Interrupted_fifo {
public:
	explicit Interrupted_fifo(const std::string& path) {
		EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
		path_ = path.c_str();
		ticks_ = 0;
		struct sigaction action{};
		action.sa_handler = tick;
		sigaction(SIGALRM, &action, &before_);
		const itimerval every_millisecond{{0, 1000}, {0, 1000}};
		setitimer(ITIMER_REAL, &every_millisecond, nullptr);
	}
	~Interrupted_fifo() {
		const itimerval never{};
		setitimer(ITIMER_REAL, &never, nullptr);
		sigaction(SIGALRM, &before_, nullptr);
		if (ticks_ >= 5) close(other_end_);
	}
	Interrupted_fifo(const Interrupted_fifo&) = delete;
	Interrupted_fifo& operator=(const Interrupted_fifo&) = delete;

private:
	static void tick(int) {
		const int error = errno;
		ticks_ = ticks_ + 1;
		if (ticks_ == 5) other_end_ = ::open(path_, O_RDWR | O_NONBLOCK | O_CLOEXEC);
		errno = error;
	}
	static inline const char* path_;
	static inline volatile sig_atomic_t ticks_;
	static inline volatile int other_end_;
	struct sigaction before_;
};

TEST(xylNative_file_linux, SignalsDoNotEndAnOpenThatWaits) {
	const Temporary_folder folder;
	const std::string native = folder / "native";
	{
		const Interrupted_fifo fifo(native);
		xylNative_file file(native.c_str(), xylFile_access_read, xylFile_flag_open_existing);
		EXPECT_TRUE(file.is_valid());
	}
	const std::string buffered = folder / "buffered";
	const Interrupted_fifo fifo(buffered);
	xylFile file;
	EXPECT_EQ(file.open(buffered.c_str(), "rb"), 0);
}

TEST(xylNative_file_async_linux, PendingOnAFifoAndFailedOnAClosedHandle) {
	const Temporary_folder folder;
	const std::string path = folder / "fifo";
	ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
	xylNative_file_async file(path.c_str(), writing, xylFile_flag_open_existing);
	ASSERT_TRUE(file.is_valid());
	char text[4]{};
	file.read(text, 3);
	EXPECT_EQ(file.get_async_status(nullptr, false), xylAsync_io_pending);
	ASSERT_EQ(write(descriptor_of(file.handle), "abc", 3), 3);
	EXPECT_EQ(file.get_async_status(nullptr, true), xylAsync_io_completed);
	EXPECT_STREQ(text, "abc");
	EXPECT_TRUE(file.close());
	file.read(text, 3);
	EXPECT_EQ(file.get_async_status(nullptr, true), xylAsync_io_failed);
	EXPECT_EQ(errno, EBADF);
}

TEST(xylNative_file_async_linux, PipeWithoutAWriterFails) {
	xylNative_file_async file;
	{
		Overlapped_pipe pipe;
		file.handle = pipe.reading_end();
	}
	char text[4];
	file.read(text, 4);
	EXPECT_EQ(file.get_async_status(nullptr, false), xylAsync_io_failed);
}

} // namespace
