#include <morvantis/platform/system/linux/page_registry.h>

#include <algorithm>
#include <cstring>

#include <sys/mman.h>

bool Page_registry::insert(xylUInt64 begin, xylUInt64 size) {
	const std::lock_guard guard(mutex_);
	if (!reserve(count_ + 1)) return false;
	const Run* place = std::lower_bound(
		runs_, runs_ + count_, begin, [](const Run& run, xylUInt64 at) { return run.begin < at; });
	const Run run{begin, begin + size, begin, true};
	const size_t index = static_cast<size_t>(place - runs_);
	replace(index, index, &run, 1);
	return true;
}

xylUInt64 Page_registry::remove(xylUInt64 begin) {
	const std::lock_guard guard(mutex_);
	const size_t first = find(begin);
	if (first == count_ || runs_[first].block != begin || runs_[first].begin != begin) return 0;
	const size_t last = end_of_block(first);
	const xylUInt64 size = runs_[last - 1].end - begin;
	replace(first, last, nullptr, 0);
	return size;
}

xylUInt64 Page_registry::size_from(xylUInt64 page) const {
	const std::lock_guard guard(mutex_);
	const size_t index = find(page);
	return index == count_ ? 0 : runs_[index].end - page;
}

xylUInt64 Page_registry::block_size(xylUInt64 begin) const {
	const std::lock_guard guard(mutex_);
	const size_t first = find(begin);
	if (first == count_ || runs_[first].begin != begin || runs_[first].block != begin) return 0;
	return runs_[end_of_block(first) - 1].end - begin;
}

bool Page_registry::decommit(xylUInt64 begin, xylUInt64 end) {
	const std::lock_guard guard(mutex_);
	size_t first = find(begin);
	if (first == count_ || end <= begin) return false;
	const xylUInt64 block = runs_[first].block;
	size_t last = first;
	while (last < count_ && runs_[last].block == block && runs_[last].begin < end) ++last;
	if (runs_[last - 1].end < end) return false;
	// At most two runs more than before: the committed rests on both sides.
	if (!reserve(count_ + 2)) return false;

	Run dropped{begin, end, block, false};
	Run parts[3];
	size_t count = 0;
	const Run head = runs_[first];
	const Run tail = runs_[last - 1];
	if (!head.committed) {
		dropped.begin = head.begin;
	} else if (head.begin < begin) {
		parts[count++] = {head.begin, begin, block, true};
	} else if (first > 0 && runs_[first - 1].block == block) {
		dropped.begin = runs_[--first].begin; // a decommitted neighbour, as states alternate
	}
	Run rest{end, tail.end, block, true};
	if (!tail.committed) {
		dropped.end = tail.end;
		rest.begin = rest.end;
	} else if (tail.end == end && last < count_ && runs_[last].block == block) {
		dropped.end = runs_[last++].end;
		rest.begin = rest.end = dropped.end;
	}
	parts[count++] = dropped;
	if (rest.begin < rest.end) parts[count++] = rest;
	replace(first, last, parts, count);
	return true;
}

size_t Page_registry::find(xylUInt64 address) const {
	const Run* behind =
		std::upper_bound(runs_, runs_ + count_, address,
	                     [](xylUInt64 at, const Run& run) { return at < run.begin; });
	if (behind == runs_ || address >= behind[-1].end) return count_;
	return static_cast<size_t>(behind - runs_) - 1;
}

size_t Page_registry::end_of_block(size_t first) const {
	size_t last = first;
	while (last < count_ && runs_[last].block == runs_[first].block) ++last;
	return last;
}

bool Page_registry::reserve(size_t count) {
	if (count <= capacity_) return true;
	const size_t capacity = std::max<size_t>(2 * capacity_, 128); // 128 runs of 32 bytes: a page
	void* memory = mmap(nullptr, capacity * sizeof(Run), PROT_READ | PROT_WRITE,
	                    MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
	if (memory == MAP_FAILED) return false;
	if (runs_) {
		std::memcpy(memory, runs_, count_ * sizeof(Run));
		munmap(runs_, capacity_ * sizeof(Run));
	}
	runs_ = static_cast<Run*>(memory);
	capacity_ = capacity;
	return true;
}

void Page_registry::replace(size_t first, size_t last, const Run* runs, size_t count) {
	std::memmove(runs_ + first + count, runs_ + last, (count_ - last) * sizeof(Run));
	std::copy_n(runs, count, runs_ + first);
	count_ = count_ - (last - first) + count;
}
