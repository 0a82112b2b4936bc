#include "../system_files.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <iterator>

#include <unistd.h>

namespace {

int descriptor_of(void* handle) { return static_cast<int>(reinterpret_cast<intptr_t>(handle)); }
void* handle_of(int descriptor) { return reinterpret_cast<void*>(intptr_t{descriptor}); }

} // namespace

int open_handle_count() {
	// The folder's own descriptor is among them, now and the next time.
	const std::filesystem::directory_iterator descriptors("/proc/self/fd");
	return static_cast<int>(std::distance(begin(descriptors), end(descriptors)));
}

void make_sparse(void*) {}

std::FILE* open_pipe(const std::string& text) {
	int ends[2];
	EXPECT_EQ(pipe(ends), 0);
	EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
	close(ends[1]);
	return fdopen(ends[0], "rb");
}

Overlapped_pipe::Overlapped_pipe() {
	int ends[2];
	EXPECT_EQ(pipe(ends), 0);
	reading_end_ = handle_of(ends[0]);
	writing_end_ = handle_of(ends[1]);
}

Overlapped_pipe::~Overlapped_pipe() { close(descriptor_of(writing_end_)); }

void Overlapped_pipe::write(const std::string& text) {
	EXPECT_EQ(::write(descriptor_of(writing_end_), text.data(), text.size()),
	          static_cast<ssize_t>(text.size()));
}

Handle_check::~Handle_check() { EXPECT_EQ(open_handle_count(), before_); }

Without_privileges::Without_privileges() {
	static constexpr uid_t nobody = 65534;
	has_changed_ = geteuid() == 0;
	if (!has_changed_) return;
	EXPECT_EQ(seteuid(nobody), 0);
}

Without_privileges::~Without_privileges() {
	if (!has_changed_) return;
	EXPECT_EQ(seteuid(0), 0);
}
