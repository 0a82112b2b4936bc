// What the kernel doesn't keep: which pages belong to one block, and which of them are decommitted.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <mutex>

// The kernel merges neighbouring mappings, so neither it nor /proc can tell where one block ends
// and the next begins. This table can: it holds every block of os::take_pages() as a sorted array
// of runs, each a stretch of pages of one block with one state.
//
// The array lives in pages of its own, so that no heap is involved, and the object is constant
// initialised: blocks may be taken by the first initialiser of a program and given back by the last
// clean-up. Finding a run is a binary search; inserting one moves the runs behind it, which is
// little beside the system call that goes with it.
//
// Threads: any.
class Page_registry {
public:
	// Remembers [`begin`, `begin` + `size`) as a committed block. False when there is no memory
	// for the table.
	bool insert(xylUInt64 begin, xylUInt64 size);
	// Forgets the block that begins at `begin` and returns its size; 0 if none does.
	xylUInt64 remove(xylUInt64 begin);
	// Bytes from `page` to the end of its run; 0 outside all blocks.
	xylUInt64 size_from(xylUInt64 page) const;
	// The size of the block that begins at `begin`; 0 if none does.
	xylUInt64 block_size(xylUInt64 begin) const;
	// Marks the pages [`begin`, `end`) decommitted. False, with nothing changed, when they don't
	// lie within one block or there is no memory for the table.
	bool decommit(xylUInt64 begin, xylUInt64 end);

private:
	// Runs of a block stand side by side without gaps, and no two neighbours of one block have the
	// same state.
	struct Run {
		xylUInt64 begin, end; // addresses, begin < end
		xylUInt64 block;      // where its block begins
		bool committed;
	};

	size_t find(xylUInt64 address) const; // index of the run that holds it, or `count_`
	size_t end_of_block(size_t first) const;
	bool reserve(size_t count);
	void replace(size_t first, size_t last, const Run* runs, size_t count);

	mutable std::mutex mutex_;
	Run* runs_ = nullptr; // sorted by address
	size_t count_ = 0;
	size_t capacity_ = 0;
};
