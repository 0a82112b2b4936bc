#include <morvantis/memory/xylheap.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <thread>
#include <utility>
#include <vector>

// The tests below ask for more memory than there is. The address sanitizer ends the program at that
// unless it is told here; other builds don't look at this function.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

namespace {

constexpr size_t too_much = size_t{1} << 60;

bool is_aligned(const void* memory, size_t alignment) {
	return reinterpret_cast<std::uintptr_t>(memory) % alignment == 0;
}

// Bytes that depend on their place and on `seed`.
void fill(void* memory, size_t size, unsigned seed) {
	auto* bytes = static_cast<unsigned char*>(memory);
	for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i * 7 + seed);
}

bool holds(const void* memory, size_t size, unsigned seed) {
	const auto* bytes = static_cast<const unsigned char*>(memory);
	for (size_t i = 0; i < size; ++i) {
		if (bytes[i] != static_cast<unsigned char>(i * 7 + seed)) return false;
	}
	return true;
}

// Blocks that are held together, so that they stand at more than one place of the heap's pages.
struct Blocks {
	~Blocks() {
		for (void* block : held) xyl_heap_free(block);
	}
	void* held[3] = {};
};

} // namespace

TEST(xyl_heap, EverySizeIsAlignedToSixteen) {
	std::vector<size_t> sizes;
	for (size_t size = 1; size <= 65536; ++size) sizes.push_back(size);
	for (const int size : {65537, 100000, 131072, 262145, 524288, 1000000, 1 << 20, 2097153,
	                       5000000, (16 << 20) - 1, 16 << 20, (16 << 20) + 1, 40000000}) {
		sizes.push_back(static_cast<size_t>(size));
	}
	for (const size_t size : sizes) {
		Blocks blocks;
		for (void*& block : blocks.held) {
			block = xyl_heap_allocate(size);
			ASSERT_NE(block, nullptr) << size;
			ASSERT_TRUE(is_aligned(block, 16)) << size;
		}
	}
}

TEST(xyl_heap, EverySizeHasEveryAlignment) {
	for (size_t alignment = 1; alignment <= 65536; alignment *= 2) {
		for (size_t size = 1; size <= 4096; ++size) {
			Blocks blocks;
			for (void*& block : blocks.held) {
				block = xyl_heap_allocate_aligned(size, alignment);
				ASSERT_TRUE(block && is_aligned(block, alignment)) << size << " at " << alignment;
				ASSERT_GE(xyl_heap_usable_size(block), size);
			}
		}
	}
}

// From a plain block, and from there to another alignment and size.
TEST(xyl_heap, EverySizeHasEveryAlignmentAfterReallocation) {
	for (size_t alignment = 1; alignment <= 65536; alignment *= 2) {
		for (size_t size = 1; size <= 4096; ++size) {
			const size_t first_size = 1 + (size * 37) % 300;
			void* block = xyl_heap_allocate(first_size);
			fill(block, first_size, 1);
			block = xyl_heap_reallocate_aligned(block, size, alignment);
			ASSERT_TRUE(block && is_aligned(block, alignment)) << size << " at " << alignment;
			ASSERT_TRUE(holds(block, std::min(first_size, size), 1)) << size << " at " << alignment;
			const size_t next_alignment = alignment == 65536 ? 1 : alignment * 2;
			block = xyl_heap_reallocate_aligned(block, size + 5, next_alignment);
			ASSERT_TRUE(block && is_aligned(block, next_alignment)) << size << " at " << alignment;
			ASSERT_TRUE(holds(block, std::min(first_size, size), 1)) << size << " at " << alignment;
			xyl_heap_free(block);
		}
	}
}

TEST(xyl_heap, WholeBlockCanBeWritten) {
	for (const size_t size : {1u, 2u, 8u, 9u, 15u, 16u, 17u, 100u, 4096u, 100000u, 3000000u}) {
		SCOPED_TRACE(size);
		void* const low = xyl_heap_allocate(size);
		void* const high = xyl_heap_allocate(size);
		fill(low, size, 1);
		fill(high, size, 2);
		EXPECT_TRUE(holds(low, size, 1));
		EXPECT_GE(xyl_heap_usable_size(low), size);
		xyl_heap_free(low);
		EXPECT_TRUE(holds(high, size, 2));
		xyl_heap_free(high);
	}
}

TEST(xyl_heap, SizeZeroIsNull) {
	EXPECT_EQ(xyl_heap_allocate(0), nullptr);
	EXPECT_EQ(xyl_heap_allocate_aligned(0, 64), nullptr);
	EXPECT_EQ(xyl_heap_reallocate_aligned(nullptr, 0, 64), nullptr);
	EXPECT_EQ(XXH_malloc(0), nullptr);
}

TEST(xyl_heap, NullIsFreedAndMeasured) {
	xyl_heap_free(nullptr);
	XXH_free(nullptr);
	EXPECT_EQ(xyl_heap_usable_size(nullptr), 0u);
}

TEST(xyl_heap, ReallocationOfNullAllocates) {
	void* const block = xyl_heap_reallocate_aligned(nullptr, 100, 256);
	ASSERT_NE(block, nullptr);
	EXPECT_TRUE(is_aligned(block, 256));
	fill(block, 100, 3);
	xyl_heap_free(block);
}

TEST(xyl_heap, ReallocationToZeroFrees) {
	// A leak here is the leak checker's to find.
	EXPECT_EQ(xyl_heap_reallocate_aligned(xyl_heap_allocate(100), 0, 16), nullptr);
}

TEST(xyl_heap, TooMuchIsNullWithoutAReport) {
	EXPECT_EQ(xyl_heap_allocate(too_much), nullptr);
	EXPECT_EQ(xyl_heap_allocate_aligned(too_much, 4096), nullptr);
	EXPECT_EQ(XXH_malloc(too_much), nullptr);
}

TEST(xyl_heap, FailedReallocationLeavesTheBlock) {
	void* const block = xyl_heap_allocate(100);
	fill(block, 100, 4);
	EXPECT_EQ(xyl_heap_reallocate_aligned(block, too_much, 16), nullptr);
	EXPECT_TRUE(holds(block, 100, 4));
	xyl_heap_free(block);
}

TEST(xyl_heap, EngineNamesReachTheSameHeap) {
	void* block = XXH_malloc(24);
	ASSERT_NE(block, nullptr);
	EXPECT_TRUE(is_aligned(block, 16));
	EXPECT_GE(xyl_heap_usable_size(block), 24u);
	fill(block, 24, 5);
	block = xyl_heap_reallocate_aligned(block, 5000, 16);
	EXPECT_TRUE(holds(block, 24, 5));
	xyl_heap_free(block);
	XXH_free(xyl_heap_allocate(24));
}

// An object whose base in use doesn't stand at its beginning.
TEST(xyl_heap, PolymorphicObjectsEndAtTheirMostDerivedAddress) {
	struct First {
		virtual ~First() = default;
		int number = 1;
	};
	struct Second {
		virtual ~Second() = default;
		int number = 2;
	};
	struct Both : First, Second {
		explicit Both(int* ended) : ended_(ended) {}
		~Both() override { ++*ended_; }
		int* ended_;
	};
	int ended = 0;
	void* const memory = xyl_heap_allocate(sizeof(Both));
	Second* const object = new (memory) Both(&ended);
	void* const most_derived = dynamic_cast<void*>(object);
	EXPECT_NE(static_cast<void*>(object), most_derived);
	EXPECT_EQ(most_derived, memory);
	object->~Second();
	xyl_heap_free(most_derived);
	EXPECT_EQ(ended, 1);
}

TEST(xyl_heap, KeepsContentsThroughARandomWalk) {
	struct Block {
		void* memory;
		size_t size;
		unsigned seed;
	};
	std::vector<Block> blocks;
	std::mt19937 random(2026);
	for (unsigned step = 0; step < 20000; ++step) {
		const size_t size = 1 + random() % (step % 50 == 0 ? 200000 : 600);
		const size_t alignment = size_t{1} << random() % 10;
		if (blocks.size() < 200) {
			void* const memory = xyl_heap_allocate_aligned(size, alignment);
			fill(memory, size, step);
			blocks.push_back({memory, size, step});
			continue;
		}
		Block& block = blocks[random() % blocks.size()];
		ASSERT_TRUE(holds(block.memory, block.size, block.seed)) << "step " << step;
		if (random() % 2) {
			block.memory = xyl_heap_reallocate_aligned(block.memory, size, alignment);
			ASSERT_TRUE(holds(block.memory, std::min(size, block.size), block.seed));
			ASSERT_TRUE(is_aligned(block.memory, alignment));
			block.size = size;
			block.seed = step;
			fill(block.memory, size, step);
		} else {
			xyl_heap_free(block.memory);
			block = blocks.back();
			blocks.pop_back();
		}
	}
	for (const Block& block : blocks) xyl_heap_free(block.memory);
}

// Blocks go round a ring of threads; each is freed by another thread than the one that took it.
TEST(xyl_heap, AnyThreadMayFree) {
	constexpr size_t threads = 4, rounds = 2000;
	std::atomic<void*> boxes[threads] = {};
	std::atomic<int> damaged = 0;
	std::vector<std::thread> workers;
	for (size_t t = 0; t < threads; ++t) {
		workers.emplace_back([&, t] {
			for (size_t i = 0; i < rounds; ++i) {
				const size_t size = sizeof(size_t) + (i * 31 + t) % 2000;
				void* const made = xyl_heap_allocate(size);
				std::memcpy(made, &size, sizeof(size));
				fill(static_cast<char*>(made) + sizeof(size), size - sizeof(size), 9);
				void* const met = boxes[(t + i) % threads].exchange(made);
				if (met == nullptr) continue;
				size_t met_size;
				std::memcpy(&met_size, met, sizeof(met_size));
				damaged += !holds(static_cast<char*>(met) + sizeof(met_size),
				                  met_size - sizeof(met_size), 9);
				xyl_heap_free(met);
			}
		});
	}
	for (std::thread& worker : workers) worker.join();
	for (std::atomic<void*>& box : boxes) xyl_heap_free(box.load());
	EXPECT_EQ(damaged, 0);
}

// What a thread leaves behind is freed after its end.
TEST(xyl_heap, BlocksOutliveTheirThread) {
	std::vector<void*> blocks;
	std::thread([&] {
		for (size_t size = 1; size < 500; ++size) {
			blocks.push_back(xyl_heap_allocate(size));
			fill(blocks.back(), size, 6);
		}
	}).join();
	for (size_t i = 0; i < blocks.size(); ++i) {
		EXPECT_TRUE(holds(blocks[i], i + 1, 6)) << i;
		xyl_heap_free(blocks[i]);
	}
}
