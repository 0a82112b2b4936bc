// The identity of program databases, whole ones and damaged ones.

#include <morvantis/platform/system/pdb_identity.h>

#include "pdb_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>

namespace {

constexpr xylGuid_type guid = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};

int pieces_read;

bool read_piece(void* source, xylUInt64 place, void* bytes, size_t size) {
	const auto& file = *static_cast<const std::vector<unsigned char>*>(source);
	++pieces_read;
	if (place > file.size() || size > file.size() - place) return false;
	std::memcpy(bytes, file.data() + place, size);
	return true;
}

std::optional<os::Pdb_identity> read(Image_builder file) {
	os::Pdb_identity identity;
	pieces_read = 0;
	const bool result = os::read_pdb_identity({read_piece, &file.bytes}, identity);
	EXPECT_LE(pieces_read, 32); // whatever the file says
	return result ? std::optional(identity) : std::nullopt;
}

} // namespace

TEST(pdb_identity, GuidAndAgesAreRead) {
	// Directories of one block and of several, blocks of all sizes.
	for (const xylUInt32 old_directories : {0u, 700u, 200'000u}) {
		for (const xylUInt32 block_size : {512u, 4096u, 65536u}) {
			SCOPED_TRACE(old_directories + block_size);
			const auto identity = read(Pdb_file(guid, 7, 9, block_size, old_directories));
			ASSERT_TRUE(identity);
			EXPECT_EQ(std::memcmp(identity->guid, &guid, sizeof(guid)), 0);
			EXPECT_EQ(identity->age, 7u);
			EXPECT_EQ(identity->build_age, 9u);
		}
	}
}

TEST(pdb_identity, WithoutDebugInformationTheFilesAgeCounts) {
	Pdb_file file(guid, 7, 9);
	file.put(file.place_of(Pdb_file::debug_block), xylUInt32{1}); // an older form
	EXPECT_EQ(read(file)->build_age, 7u);
	Pdb_file short_one(guid, 7, 9);
	const size_t directory = short_one.place_of(Pdb_file::first_directory_block);
	short_one.put(directory + 16, xylUInt32{11}); // size of the debug stream
	EXPECT_EQ(read(short_one)->build_age, 7u);
	short_one.put(directory + 16, 0xFFFFFFFF); // no such stream
	EXPECT_EQ(read(short_one)->build_age, 7u);
	Pdb_file cut_one(guid, 7, 9); // its last number, where the debug stream is, isn't whole
	--cut_one.bytes[44];
	EXPECT_EQ(read(cut_one)->build_age, 7u);
}

TEST(pdb_identity, DamagedFilesHaveNone) {
	const size_t directory = Pdb_file(guid, 7, 9).place_of(Pdb_file::first_directory_block);
	struct Case {
		const char* name;
		size_t place;
		xylUInt32 value;
	};
	const Case cases[] = {
		{"magic", 0, 0x12345678},
		{"end of the magic", 28, 0x12345678},
		{"block size 0", 32, 0},
		{"block size 256", 32, 256},
		{"block size 131072", 32, 131072},
		{"block size 513", 32, 513},
		{"block size of 4 GB", 32, 0x80000000},
		{"directory of no bytes", 44, 0},
		{"directory without blocks of streams", 44, 20},
		{"directory list far off", 52, 0xFFFFFFFF},
		{"directory far off", Pdb_file::list_block * 512, 0xFFFFFFFF},
		{"no streams", directory, 0},
		{"one stream", directory, 1},
		{"more streams than numbers", directory, 0x10000000},
		{"first stream of 4 GB", directory + 4, 0xFFFFFFFE},
		{"information absent", directory + 8, 0xFFFFFFFF},
		{"information too short", directory + 8, 27},
		{"information far off", directory + 28, 0xFFFFFFFF},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Pdb_file file(guid, 7, 9);
		ASSERT_TRUE(read(file));
		file.put(c.place, c.value);
		EXPECT_FALSE(read(file));
	}
}

TEST(pdb_identity, CutAndDamagedFilesAreSurvived) {
	const Pdb_file whole(guid, 7, 9);
	int complete = 0;
	for (size_t size = 0; size <= whole.bytes.size(); ++size) {
		Image_builder cut;
		cut.bytes.assign(whole.bytes.begin(),
		                 whole.bytes.begin() + static_cast<std::ptrdiff_t>(size));
		complete += read(cut).has_value();
	}
	EXPECT_GT(complete, 0);
	EXPECT_LE(complete, 513); // the directory is in the last block
	std::mt19937 random(20260712);
	for (int i = 0; i < 50000; ++i) {
		Image_builder damaged = whole;
		for (unsigned int left = 1 + random() % 4; left > 0; --left) {
			const size_t place = random() % 2 ? random() % 64 : random() % damaged.bytes.size();
			damaged.bytes[place] = static_cast<unsigned char>(random());
		}
		read(damaged);
	}
}
