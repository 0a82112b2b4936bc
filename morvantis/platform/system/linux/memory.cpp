#include <morvantis/platform/system/memory.h>

#include <morvantis/platform/system/linux/page_registry.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constinit Page_registry registry;

xylUInt64 page_bytes() { return static_cast<xylUInt64>(sysconf(_SC_PAGESIZE)); }

xylUInt64 page_of(const void* address) {
	return reinterpret_cast<xylUInt64>(address) & ~(page_bytes() - 1);
}

// Reads a file of /proc into `text`, cut to its size and terminated; false if it can't be opened.
// Plain reads, since a C stream would allocate.
bool read_proc_file(const char* path, char* text, size_t size) {
	const int file = open(path, O_RDONLY | O_CLOEXEC);
	if (file < 0) return false;
	const ssize_t count = read(file, text, size - 1);
	close(file);
	text[count > 0 ? count : 0] = 0;
	return count > 0;
}

// The number of kB behind `label` in the text of /proc/meminfo, in bytes; 0 without such a line.
xylUInt64 bytes_behind(const char* text, const char* label) {
	const char* line = std::strstr(text, label);
	return line ? std::strtoull(line + std::strlen(label), nullptr, 10) * 1024 : 0;
}

} // namespace

os::Page_sizes os::page_sizes() {
	const xylUInt32 size = static_cast<xylUInt32>(page_bytes());
	return {size, size};
}

void* os::take_pages(xylUInt64 size) {
	const xylUInt64 whole = (size + page_bytes() - 1) & ~(page_bytes() - 1);
	if (whole < size || whole == 0) {
		errno = size == 0 ? EINVAL : ENOMEM;
		return nullptr;
	}
	void* block = mmap(nullptr, whole, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
	if (block == MAP_FAILED) return nullptr;
	if (registry.insert(reinterpret_cast<xylUInt64>(block), whole)) return block;
	munmap(block, whole);
	errno = ENOMEM;
	return nullptr;
}

xylUInt64 os::region_size(const void* address) { return registry.size_from(page_of(address)); }

bool os::release_pages(void* block) {
	const xylUInt64 size = registry.remove(reinterpret_cast<xylUInt64>(block));
	if (size == 0) {
		errno = EINVAL;
		return false;
	}
	return munmap(block, size) == 0;
}

bool os::decommit_pages(void* address, xylUInt64 size) {
	const xylUInt64 start = reinterpret_cast<xylUInt64>(address);
	if (size == 0) size = registry.block_size(start);
	const xylUInt64 begin = page_of(address);
	const xylUInt64 end = (start + size + page_bytes() - 1) & ~(page_bytes() - 1);
	if (size == 0 || start + size < start || !registry.decommit(begin, end)) {
		errno = EINVAL;
		return false;
	}
	void* pages = reinterpret_cast<void*>(begin);
	return madvise(pages, end - begin, MADV_DONTNEED) == 0 &&
	       mprotect(pages, end - begin, PROT_NONE) == 0;
}

bool os::process_memory(Process_memory* usage) {
	char text[256];
	// Of the thread: that of the process is all zeros once its first thread has ended.
	if (!read_proc_file("/proc/thread-self/statm", text, sizeof(text))) return false;
	// Pages: size, resident, shared, text, library, data + stack. The last is VmData + VmStk of
	// /proc/self/status, from one short line instead of fifty.
	unsigned long long resident = 0, data = 0;
	if (std::sscanf(text, "%*u %llu %*u %*u %*u %llu", &resident, &data) != 2) return false;
	*usage = {resident * page_bytes(), data * page_bytes()};
	return true;
}

bool os::physical_memory(Memory_status* status) {
	char text[2048];
	if (!read_proc_file("/proc/meminfo", text, sizeof(text))) return false;
	const xylUInt64 total = bytes_behind(text, "MemTotal:");
	if (total == 0) return false;
	// MemAvailable and not MemFree: the kernel counts the page cache that it would give up.
	*status = {bytes_behind(text, "MemAvailable:"), total};
	return true;
}
