#include <morvantis/platform/system/linux/own_memory.h>

#include <sys/uio.h>
#include <unistd.h>

size_t os::read_own_memory(xylUInt64 address, void* target, size_t size) {
	const iovec to{target, size};
	const iovec from{reinterpret_cast<void*>(address), size};
	// By the thread's number: the process's is that of its first thread, which may have ended.
	const ssize_t count = process_vm_readv(gettid(), &to, 1, &from, 1, 0);
	return count > 0 ? static_cast<size_t>(count) : 0;
}
