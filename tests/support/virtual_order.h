// The place of a virtual operation in its class's table, which is a contract with the host.
#pragma once

#include <cstddef>
#include <cstring>

// By the Itanium C++ ABI, which the compilers of both systems follow: a pointer to a virtual
// operation holds one more than its offset in the table.
template <typename Operation> size_t virtual_index(Operation operation) {
	size_t offset = 0;
	static_assert(sizeof(operation) >= sizeof(offset));
	std::memcpy(&offset, &operation, sizeof(offset));
	return (offset - 1) / sizeof(void*);
}
