// LZ4's functions, called by a host through the library under their own names.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <lz4.h>
#include <lz4hc.h>

namespace {

// Text of few words, so that it can be compressed.
std::vector<char> words(size_t size) {
	std::mt19937 random(7);
	const std::string all[] = {"stone ", "river ", "lantern ", "road "};
	std::vector<char> text;
	while (text.size() < size) {
		const std::string& word = all[random() % std::size(all)];
		text.insert(text.end(), word.begin(), word.end());
	}
	text.resize(size);
	return text;
}

std::vector<char> decompressed(const std::vector<char>& packed, int packed_size, size_t size) {
	std::vector<char> text(size);
	const int count =
		LZ4_decompress_safe(packed.data(), text.data(), packed_size, static_cast<int>(size));
	text.resize(count < 0 ? 0 : static_cast<size_t>(count));
	return text;
}

} // namespace

TEST(Lz4, BlockFunctionsComeBackToTheSameBytes) {
	for (const size_t size : {size_t{1}, size_t{100}, size_t{70'000}}) {
		SCOPED_TRACE(size);
		const std::vector<char> text = words(size);
		std::vector<char> packed(static_cast<size_t>(LZ4_compressBound(static_cast<int>(size))));
		const int fast = LZ4_compress_default(text.data(), packed.data(), static_cast<int>(size),
		                                      static_cast<int>(packed.size()));
		ASSERT_GT(fast, 0);
		EXPECT_EQ(decompressed(packed, fast, size), text);
		const int high = LZ4_compress_HC(text.data(), packed.data(), static_cast<int>(size),
		                                 static_cast<int>(packed.size()), LZ4HC_CLEVEL_MAX);
		ASSERT_GT(high, 0);
		EXPECT_LE(high, fast);
		EXPECT_EQ(decompressed(packed, high, size), text);
	}
}

TEST(Lz4, DamagedInputIsRefused) {
	const std::vector<char> text = words(1000);
	std::vector<char> packed(static_cast<size_t>(LZ4_compressBound(1000)));
	const int count =
		LZ4_compress_default(text.data(), packed.data(), 1000, static_cast<int>(packed.size()));
	ASSERT_GT(count, 10);
	std::vector<char> out(1000);
	EXPECT_LT(LZ4_decompress_safe(packed.data(), out.data(), count, 999),
	          0); // no room for the last byte
	EXPECT_LT(LZ4_decompress_safe(packed.data(), out.data(), count - 1, 1000), 0);
}
