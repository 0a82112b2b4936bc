#include <morvantis/platform/system/linux/own_memory.h>

#include <sys/uio.h>
#include <unistd.h>

size_t os::read_own_memory(xylUInt64 address, void* target, size_t size) {
	const iovec to{target, size};
	const iovec from{reinterpret_cast<void*>(address), size};
	const ssize_t count = process_vm_readv(getpid(), &to, 1, &from, 1, 0);
	return count > 0 ? static_cast<size_t>(count) : 0;
}
