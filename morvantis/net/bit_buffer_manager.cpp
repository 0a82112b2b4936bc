#include <morvantis/net/bit_buffer_manager.h>

#include <morvantis/memory/xylheap.h>

#include <algorithm>
#include <new>

Bit_buffer_manager::~Bit_buffer_manager() { reset(); }

Dynamic_bit_buffer* Bit_buffer_manager::get_bit_buffer() {
	if (free_list_.empty()) return get_bit_buffer_mt();
	Dynamic_bit_buffer* const buffer = free_list_.back();
	free_list_.pop_back();
	return buffer;
}

void Bit_buffer_manager::return_bit_buffer(Dynamic_bit_buffer* buffer) {
	buffer->clear();
	free_list_.push_back(buffer);
}

bool Bit_buffer_manager::contains_bit_buffer(Dynamic_bit_buffer* buffer) const {
	return std::find(free_list_.begin(), free_list_.end(), buffer) != free_list_.end();
}

void Bit_buffer_manager::reset() {
	for (Dynamic_bit_buffer*& buffer : free_list_) {
		if (buffer) {
			buffer->~Dynamic_bit_buffer();
			xyl_heap_free(buffer);
		}
		buffer = nullptr;
	}
	free_list_.clear();
}

Dynamic_bit_buffer* Bit_buffer_manager::get_bit_buffer_mt() {
	return new (xyl_heap_allocate(sizeof(Dynamic_bit_buffer))) Dynamic_bit_buffer;
}

void Bit_buffer_manager::return_bit_buffer_mt(Dynamic_bit_buffer* buffer) {
	// kept: without its destructor.
	xyl_heap_free(buffer);
}
