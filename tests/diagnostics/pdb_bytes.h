// Program databases, put together block by block, for tests of what is read from them.
#pragma once

#include "image_bytes.h"

// A whole one of `block_size`: a stream of old directories, the information stream, an empty one,
// the debug stream.
class Pdb_file : public Image_builder {
public:
	explicit Pdb_file(const xylGuid_type& guid, xylUInt32 age, xylUInt32 build_age,
	                  xylUInt32 block_size = 512, xylUInt32 old_directories = 700)
		: block_size_(block_size) {
		const auto blocks = [block_size](size_t size) {
			return (size + block_size - 1) / block_size;
		};
		std::vector<xylUInt32> directory = {4, old_directories, 28, 0xFFFFFFFF, 12};
		for (size_t i = 0; i < blocks(old_directories); ++i) directory.push_back(3);
		directory.insert(directory.end(), {information_block, debug_block});

		put_text(0, "Microsoft C/C++ MSF 7.00\r\n\x1A"
		            "DS");
		const size_t size = directory.size() * 4;
		put(32, block_size)
			.put(36, xylUInt32{1})
			.put(40, xylUInt32{6} + static_cast<xylUInt32>(blocks(size)));
		put(44, static_cast<xylUInt32>(size)).put(52, list_block);
		put_block(information_block, xylUInt32{20000404}, xylUInt32{0x5F000000}, age, guid);
		put_block(debug_block, xylUInt32{0xFFFFFFFF}, xylUInt32{19990903}, build_age);
		// The directory lies behind all else, its last block first.
		for (size_t i = 0; i < blocks(size); ++i) {
			const auto block = static_cast<xylUInt32>(first_directory_block + blocks(size) - 1 - i);
			put(place_of(list_block) + i * 4, block);
			const size_t done = i * block_size, part = std::min<size_t>(block_size, size - done);
			put_bytes(place_of(block), reinterpret_cast<const char*>(directory.data()) + done,
			          part);
		}
		bytes.resize(blocks(bytes.size()) * block_size);
	}
	size_t place_of(xylUInt32 block) const { return size_t{block} * block_size_; }

	static constexpr xylUInt32 information_block = 4, debug_block = 5, list_block = 6,
							   first_directory_block = 7;

private:
	template <typename... Values> void put_block(xylUInt32 block, const Values&... values) {
		size_t place = place_of(block);
		((put(place, values), place += sizeof(values)), ...);
	}

	xylUInt32 block_size_;
};
