// A free list of ready bit buffers, so that a packet path neither builds nor zeroes one per packet.
#pragma once

#include <morvantis/memory/xylarray.h>
#include <morvantis/net/dynamic_bit_buffer.h>

// Hands out the buffer that came back last. The pool owns the buffers in it; one that is handed out
// belongs to the caller until it comes back. There is no upper bound, and memory goes back to the
// heap only with reset() and with the pool itself.
//
// Threads: one manager belongs to one thread at a time. The two `_mt` operations are for any
// thread: they go to the heap and never to a pool.
class MORVANTIS_API Bit_buffer_manager {
public:
	Bit_buffer_manager() {}
	// kept: copies the list and not the buffers, which are then owned, and freed, twice.
	Bit_buffer_manager(const Bit_buffer_manager&) = default;
	Bit_buffer_manager& operator=(const Bit_buffer_manager&) = default;
	// Frees the buffers in the pool; those handed out are left to their holders.
	~Bit_buffer_manager();

	// An empty buffer with all its storage zero. Allocates only when the pool is empty; a buffer
	// from the pool still has the capacity of its last use.
	//
	// kept: and its `packet_id`, `user_block` and `user_int` fields too.
	Dynamic_bit_buffer* get_bit_buffer();
	// Clears the buffer and takes it into the pool. `buffer` is not null and not in the pool
	// already: nothing checks that, and one returned twice would be handed out twice.
	void return_bit_buffer(Dynamic_bit_buffer* buffer);
	// Whether the buffer is in the pool now; looks at one after the other.
	bool contains_bit_buffer(Dynamic_bit_buffer* buffer) const;
	// Frees the buffers in the pool. The list keeps its own storage.
	void reset();

	// A new buffer, for the calling thread or any other to give back.
	static Dynamic_bit_buffer* get_bit_buffer_mt();
	// Frees such a buffer; null does nothing.
	//
	// kept: the object's memory alone. A heap block that the buffer has grown is lost, so keep
	// these buffers within the static size.
	static void return_bit_buffer_mt(Dynamic_bit_buffer* buffer);

private:
	xylArray<Dynamic_bit_buffer*> free_list_;
};

// The library's one pool, empty at load. It frees its buffers when the library unloads.
extern MORVANTIS_API Bit_buffer_manager bit_buffer_manager;
