// What the cache gives back, and that it is never another place's.
#include <morvantis/platform/system/linux/frame_cache.h>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <sys/mman.h>

using os::Frame_cache;
using os::Frame_image;

namespace {

// Too large for a stack.
std::unique_ptr<Frame_cache> make_cache() { return std::make_unique<Frame_cache>(); }

// Stands for an image's first page.
struct Page {
	unsigned char build_id[8] = {1, 2, 3, 4, 5, 6, 7, 8};
	Frame_image image() const { return {reinterpret_cast<xylUInt64>(build_id), 0x1000, 0x5000}; }
};

} // namespace

TEST(Frame_cache, FindsWhatWasStored) {
	const auto cache = make_cache();
	const Page page;
	EXPECT_EQ(cache->find(0x1234, page.image()), os::frame_unknown);
	cache->store(0x1234, page.image(), page.build_id, os::frame_leaf);
	EXPECT_EQ(cache->find(0x1234, page.image()), os::frame_leaf);
	EXPECT_EQ(cache->find(0x1235, page.image()), os::frame_unknown);
	cache->store(0x1234, page.image(), page.build_id, os::frame_last); // replaces
	EXPECT_EQ(cache->find(0x1234, page.image()), os::frame_last);
}

TEST(Frame_cache, FindsNothingOfAnotherImage) {
	const auto cache = make_cache();
	Page page;
	const Frame_image image = page.image();
	cache->store(0x1234, image, page.build_id, os::frame_leaf);
	Frame_image other = image;
	other.base += 0x1000;
	EXPECT_EQ(cache->find(0x1234, other), os::frame_unknown);
	other = image;
	other.table += 4;
	EXPECT_EQ(cache->find(0x1234, other), os::frame_unknown);
	for (unsigned char& byte : page.build_id) { // another image at the same base
		++byte;
		EXPECT_EQ(cache->find(0x1234, image), os::frame_unknown);
		--byte;
	}
	EXPECT_EQ(cache->find(0x1234, image), os::frame_leaf);
}

TEST(Frame_cache, KeepsTwoPlacesOfOneSet) {
	const auto cache = make_cache();
	const Page page;
	// Equal in the low 20 bits, which choose the set.
	const xylUInt64 addresses[] = {0x100123, 0x200123, 0x300123};
	cache->store(addresses[0], page.image(), page.build_id, 8);
	cache->store(addresses[1], page.image(), page.build_id, 16);
	EXPECT_EQ(cache->find(addresses[0], page.image()), 8u);
	EXPECT_EQ(cache->find(addresses[1], page.image()), 16u);
	cache->store(addresses[2], page.image(), page.build_id, 24);
	EXPECT_EQ(cache->find(addresses[2], page.image()), 24u);
	const int kept = (cache->find(addresses[0], page.image()) == 8) +
	                 (cache->find(addresses[1], page.image()) == 16);
	EXPECT_EQ(kept, 1);
}

TEST(Frame_cache, NeverGivesTheFrameOfAnotherPlace) {
	const auto cache = make_cache();
	const Page page;
	const Frame_image image = page.image();
	std::mt19937_64 random(5);
	int found = 0;
	for (int i = 0; i < 200000; ++i) {
		const xylUInt64 address = random() % 6000 * 16;
		const os::Packed_frame frame = cache->find(address, image);
		if (frame == os::frame_unknown) {
			cache->store(address, image, page.build_id, address + 1);
		} else {
			ASSERT_EQ(frame, address + 1);
			++found;
		}
	}
	EXPECT_GT(found, 20000); // 2048 of 6000 have room
}

namespace {

// What a signal handler finds that comes while a place is being written.
struct Interruption {
	Frame_cache* cache;
	Frame_image image;
	const Page* page;
	void* forbidden; // memory that may not be read until the handler has run
	os::Packed_frame found = 0;
};
Interruption* interruption;

void use_cache_meanwhile(int) {
	Interruption& now = *interruption;
	now.found = now.cache->find(0x1234, now.image);
	now.cache->store(0x1234, now.image, now.page->build_id, os::frame_on_rbp); // waits for nobody
	mprotect(now.forbidden, 4096, PROT_READ);
}

} // namespace

TEST(Frame_cache, TakesAPlaceThatIsBeingWrittenForAbsent) {
	const auto cache = make_cache();
	const Page page;
	void* const forbidden = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
	ASSERT_NE(forbidden, MAP_FAILED);
	Interruption state{cache.get(), page.image(), &page, forbidden};
	interruption = &state;
	cache->store(0x1234, state.image, page.build_id, os::frame_leaf);

	struct sigaction action{}, before;
	action.sa_handler = use_cache_meanwhile;
	sigaction(SIGSEGV, &action, &before);
	state.found = os::frame_leaf;
	cache->store(0x1234, state.image, static_cast<unsigned char*>(forbidden), os::frame_last);
	sigaction(SIGSEGV, &before, nullptr);
	EXPECT_EQ(state.found, os::frame_unknown);
	EXPECT_EQ(cache->find(0x1234, state.image), os::frame_last);
	munmap(forbidden, 4096);
}

TEST(Frame_cache, ServesThreadsAtOnce) {
	const auto cache = make_cache();
	const std::vector<Page> pages(3);
	std::vector<std::thread> threads;
	std::atomic<int> wrong = 0;
	for (unsigned int number = 0; number < 4; ++number) {
		threads.emplace_back([&, number] {
			std::mt19937 random(number);
			for (int i = 0; i < 20000; ++i) {
				const size_t page = random() % pages.size();
				const Frame_image image = pages[page].image();
				const xylUInt64 address = random() % 16 << 20; // all in one set
				const xylUInt64 right = address + 8 * page + 8;
				const os::Packed_frame frame = cache->find(address, image);
				if (frame != os::frame_unknown && frame != right) ++wrong;
				if (random() % 2) cache->store(address, image, pages[page].build_id, right);
			}
		});
	}
	for (std::thread& thread : threads) thread.join();
	EXPECT_EQ(wrong, 0);
}
