#include <morvantis/platform/system/linux/page_registry.h>

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace {

constexpr xylUInt64 page = 4096;

// What the table should know, one entry a page: the number of its block and its state.
struct Model {
	struct Page {
		xylUInt64 block;
		bool committed;
		bool operator==(const Page&) const = default;
	};
	std::map<xylUInt64, Page> pages;
	std::map<xylUInt64, xylUInt64> sizes; // of each block, by its start

	bool is_free(xylUInt64 begin, xylUInt64 size) const {
		for (xylUInt64 at = begin; at < begin + size; at += page) {
			if (pages.count(at)) return false;
		}
		return true;
	}
	void insert(xylUInt64 begin, xylUInt64 size) {
		sizes[begin] = size;
		for (xylUInt64 at = begin; at < begin + size; at += page) pages[at] = {begin, true};
	}
	xylUInt64 remove(xylUInt64 begin) {
		if (!sizes.count(begin)) return 0;
		const xylUInt64 size = sizes[begin];
		sizes.erase(begin);
		for (xylUInt64 at = begin; at < begin + size; at += page) pages.erase(at);
		return size;
	}
	bool decommit(xylUInt64 begin, xylUInt64 end) {
		for (xylUInt64 at = begin; at < end; at += page) {
			if (!pages.count(at) || pages[at].block != pages[begin].block) return false;
		}
		for (xylUInt64 at = begin; at < end; at += page) pages[at].committed = false;
		return begin < end;
	}
	xylUInt64 size_from(xylUInt64 begin) const {
		const auto first = pages.find(begin);
		xylUInt64 size = 0;
		for (auto at = first; at != pages.end() && at->first == begin + size; ++at) {
			if (!(at->second == first->second)) break;
			size += page;
		}
		return size;
	}
};

TEST(Page_registry, BlocksSideBySideStayApart) {
	Page_registry registry;
	ASSERT_TRUE(registry.insert(2 * page, 2 * page));
	ASSERT_TRUE(registry.insert(4 * page, page));
	ASSERT_TRUE(registry.insert(page, page));
	EXPECT_EQ(registry.size_from(page), page);
	EXPECT_EQ(registry.size_from(2 * page), 2 * page);
	EXPECT_EQ(registry.size_from(3 * page), page);
	EXPECT_EQ(registry.size_from(5 * page), 0u);
	EXPECT_EQ(registry.block_size(3 * page), 0u) << "the middle of a block is no block";
	EXPECT_EQ(registry.remove(3 * page), 0u);
	EXPECT_EQ(registry.remove(2 * page), 2 * page);
	EXPECT_EQ(registry.remove(2 * page), 0u);
	EXPECT_EQ(registry.size_from(4 * page), page);
}

TEST(Page_registry, DecommittedRunsJoinAndEndTheirNeighbours) {
	Page_registry registry;
	ASSERT_TRUE(registry.insert(0x10000, 8 * page));
	ASSERT_TRUE(registry.decommit(0x10000 + 2 * page, 0x10000 + 3 * page));
	EXPECT_EQ(registry.size_from(0x10000), 2 * page);
	EXPECT_EQ(registry.size_from(0x10000 + 2 * page), page);
	EXPECT_EQ(registry.size_from(0x10000 + 3 * page), 5 * page);
	ASSERT_TRUE(registry.decommit(0x10000 + 3 * page, 0x10000 + 5 * page));
	EXPECT_EQ(registry.size_from(0x10000 + 2 * page), 3 * page);
	EXPECT_EQ(registry.block_size(0x10000), 8 * page);
	EXPECT_FALSE(registry.decommit(0x10000 + 7 * page, 0x10000 + 9 * page)) << "past the end";
	EXPECT_EQ(registry.size_from(0x10000 + 7 * page), page) << "and nothing changed";
	EXPECT_EQ(registry.remove(0x10000), 8 * page);
}

TEST(Page_registry, AgreesWithAPageByPageModel) {
	std::mt19937 random(20260101);
	const auto below = [&](unsigned int limit) { return xylUInt64{random() % limit}; };
	Page_registry registry;
	Model model;
	constexpr unsigned int pages = 600; // so that the table grows beyond its first 128 runs
	for (int step = 0; step < 6000; ++step) {
		const xylUInt64 at = (1 + below(pages)) * page;
		const xylUInt64 size = (1 + below(6)) * page;
		switch (below(8)) {
		case 0:
			EXPECT_EQ(registry.remove(at), model.remove(at));
			break;
		case 1:
		case 2:
			EXPECT_EQ(registry.decommit(at, at + size), model.decommit(at, at + size));
			break;
		default:
			if (!model.is_free(at, size)) break;
			ASSERT_TRUE(registry.insert(at, size));
			model.insert(at, size);
		}
		if (step % 50 != 0) continue;
		for (xylUInt64 look = 0; look < (pages + 8) * page; look += page) {
			ASSERT_EQ(registry.size_from(look), model.size_from(look)) << "step " << step;
			const auto size_of_block = model.sizes.find(look);
			ASSERT_EQ(registry.block_size(look),
			          size_of_block == model.sizes.end() ? 0 : size_of_block->second);
		}
	}
}

} // namespace
