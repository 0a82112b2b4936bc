// Identities read from images in memory, whole ones and every damage that the reader can meet.

#include <morvantis/diagnostics/image_identity.h>

#include "image_bytes.h"

#include <morvantis/diagnostics/zubcallstack_module.h>

#include <gtest/gtest.h>

#include <random>

namespace {

// The one block that the reader may look at; every other address is out of bounds. The block is
// exactly as long as the bytes, so that the address sanitizer sees a step too far.
const std::vector<unsigned char>* readable_block;

size_t readable_bytes(const void* address) {
	const auto begin = reinterpret_cast<size_t>(readable_block->data());
	const auto place = reinterpret_cast<size_t>(address);
	return place >= begin && place < begin + readable_block->size()
	           ? begin + readable_block->size() - place
	           : 0;
}

struct Reading {
	bool result;
	zubCallstack_module module;
};

Reading read(const Image_builder& image) {
	const std::vector<unsigned char> block(image.bytes);
	readable_block = &block;
	Reading reading;
	reading.module.name = "game.so";
	reading.module.base_address = reinterpret_cast<size_t>(block.data());
	reading.result = read_image_identity(reading.module, readable_bytes);
	return reading;
}

void expect_no_identity(const Reading& reading) {
	EXPECT_FALSE(reading.result);
	EXPECT_EQ(reading.module.pdb_guid, xylGuid_type{});
	EXPECT_EQ(reading.module.pdb_signature, 0u);
	EXPECT_EQ(reading.module.pdb_age, 0u);
	EXPECT_STREQ(reading.module.pdb_name.char_p(), "");
}

} // namespace

TEST(image_identity, WindowsImageTellsHeadersAndRecord) {
	const Reading reading = read(Windows_image());
	EXPECT_TRUE(reading.result);
	EXPECT_EQ(reading.module.image_size, 0x4000u);
	EXPECT_EQ(reading.module.time_date_stamp, 0x5F000001u);
	EXPECT_FALSE(reading.module.is_stripped);
	EXPECT_EQ(reading.module.pdb_guid, Windows_image::guid);
	EXPECT_EQ(reading.module.pdb_signature, 0x53445352u);
	EXPECT_EQ(reading.module.pdb_age, 7u);
	EXPECT_STREQ(reading.module.pdb_name.char_p(), "C:\\build\\game.pdb");
	EXPECT_EQ(reading.module.pdb_name.length(), 17);
}

TEST(image_identity, CharacteristicsTellThatSymbolsWereTakenOut) {
	Windows_image image;
	image.put(Windows_image::nt + 22, xylUInt16{0x0200});
	EXPECT_TRUE(read(image).module.is_stripped);
	image.put(Windows_image::nt + 22, xylUInt16{0xFDFF});
	EXPECT_FALSE(read(image).module.is_stripped);
}

TEST(image_identity, WithoutMagicNothingIsRead) {
	Windows_image image;
	image.put_bytes(0, "ZM", 2);
	const Reading reading = read(image);
	expect_no_identity(reading);
	EXPECT_EQ(reading.module.image_size, 0u);
	EXPECT_EQ(reading.module.time_date_stamp, 0u);
}

TEST(image_identity, LessThanOneWholeDebugEntryIsNoIdentity) {
	Windows_image image;
	for (const xylUInt32 size : {0u, 27u}) {
		SCOPED_TRACE(size);
		image.put(Windows_image::nt + 188, size);
		const Reading reading = read(image);
		expect_no_identity(reading);
		EXPECT_EQ(reading.module.image_size, 0x4000u); // the headers were read all the same
	}
}

TEST(image_identity, DebugEntriesOfOtherTypesAndEmptyOnesArePassedOver) {
	Windows_image image;
	image.put(Windows_image::nt + 188, xylUInt32{3 * 28 + 27}); // the last is not whole
	image.put_entry(0, 13, 64, 0x10);
	image.put_entry(1, 2, 0, 0x10);
	image.put_entry(2, 2, 1, Windows_image::record);
	image.put_entry(3, 2, 64, 0x10);
	const Reading reading = read(image);
	EXPECT_TRUE(reading.result);
	EXPECT_EQ(reading.module.pdb_age, 7u);

	image.put_entry(2, 4, 64, Windows_image::record);
	const Reading without = read(image);
	EXPECT_TRUE(without.result); // a directory was there, a record was not
	EXPECT_EQ(without.module.pdb_signature, 0u);
}

TEST(image_identity, LaterRecordOverridesAnEarlierOne) {
	Windows_image image;
	image.put(Windows_image::nt + 188, xylUInt32{2 * 28});
	image.put_entry(1, 2, 64, 0x380);
	const xylGuid_type second = {1, 2, 3, {}};
	image.put_record(0x380, second, 9, "second.pdb");
	const Reading reading = read(image);
	EXPECT_TRUE(reading.result);
	EXPECT_EQ(reading.module.pdb_guid, second);
	EXPECT_EQ(reading.module.pdb_age, 9u);
	EXPECT_STREQ(reading.module.pdb_name.char_p(), "second.pdb");
}

TEST(image_identity, RecordThatIsNoRsdsEndsTheReadingAtOnce) {
	Windows_image image;
	image.put(Windows_image::nt + 188, xylUInt32{3 * 28});
	image.put_entry(1, 2, 64, 0x380);
	image.put_bytes(0x380, "NB10", 4);
	image.put_entry(2, 2, 64, 0x3C0);
	image.put_record(0x3C0, {}, 9, "third.pdb");
	const Reading reading = read(image);
	EXPECT_FALSE(reading.result);
	EXPECT_EQ(reading.module.pdb_age, 7u); // of the first
	EXPECT_STREQ(reading.module.pdb_name.char_p(), "C:\\build\\game.pdb");

	image.put_bytes(Windows_image::record, "RSDT", 4);
	expect_no_identity(read(image));
}

TEST(image_identity, PlacesOutsideTheImageAreNotRead) {
	struct Case {
		const char* name;
		size_t place;
		xylUInt32 value;
	};
	const Case cases[] = {
		{"headers", 60, 0x7FFFFFFF},
		{"headers, negative", 60, 0xFFFFFF00},
		{"headers, at the end", 60, 0x3FE},
		{"directory behind the end", Windows_image::nt + 184, 0x400},
		{"directory across the end", Windows_image::nt + 184, 0x3F0},
		{"directory far off", Windows_image::nt + 184, 0xFFFFFFFF},
		{"record behind the end", Windows_image::directory + 20, 0x400},
		{"record across the end", Windows_image::directory + 20, 0x3FD},
		{"record far off", Windows_image::directory + 20, 0xFFFFFFF0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Windows_image image;
		image.put(c.place, c.value);
		expect_no_identity(read(image));
	}
}

TEST(image_identity, DirectoryLargerThanTheImageKeepsWhatCameBeforeItsEnd) {
	Windows_image image;
	image.put(Windows_image::nt + 188, xylUInt32{0xFFFFFFFF});
	const Reading reading = read(image);
	EXPECT_FALSE(reading.result);
	EXPECT_EQ(reading.module.pdb_age, 7u);
}

TEST(image_identity, NameEndsWithTheImageWhereItHasNoTerminator) {
	Windows_image image;
	image.put_entry(0, 2, 64, 0x3E0);
	image.put_record(0x3E0, Windows_image::guid, 1, "12345678");
	image.bytes.resize(0x400);
	const Reading reading = read(image);
	EXPECT_TRUE(reading.result);
	EXPECT_STREQ(reading.module.pdb_name.char_p(), "12345678");

	image.bytes.resize(0x3F8); // the record without its name
	const Reading nameless = read(image);
	EXPECT_TRUE(nameless.result);
	EXPECT_STREQ(nameless.module.pdb_name.char_p(), "");
}

TEST(image_identity, BuildIdIsAGuidInMemoryOrder) {
	for (const xylUInt64 base : {0x0ull, 0x400000ull, 0x400123ull}) {
		SCOPED_TRACE(base);
		Elf_image image(base & ~0xFFFull);
		image.put_segment(0, 1, base, 0x2345, 0x1000); // counts from the page it begins on
		const Reading reading = read(image);
		EXPECT_TRUE(reading.result);
		EXPECT_EQ(
			reading.module.pdb_guid,
			(xylGuid_type{0x33323130, 0x3534, 0x3736, {'8', '9', 'A', 'B', 'C', 'D', 'E', 'F'}}));
		EXPECT_EQ(reading.module.pdb_signature, 0x53445352u);
		EXPECT_EQ(reading.module.pdb_age, 0u);
		EXPECT_STREQ(reading.module.pdb_name.char_p(), "game.so");
		EXPECT_EQ(reading.module.image_size, 0x3000u);
		EXPECT_EQ(reading.module.time_date_stamp, 0u);
		EXPECT_FALSE(reading.module.is_stripped);
	}
}

TEST(image_identity, ShortBuildIdIsPaddedWithZeros) {
	Elf_image image;
	image.put_note(Elf_image::notes, "GNU", 3, "01234");
	const Reading reading = read(image);
	EXPECT_TRUE(reading.result);
	EXPECT_EQ(reading.module.pdb_guid, (xylGuid_type{0x33323130, 0x0034, 0, {}}));
}

TEST(image_identity, OtherNotesArePassedOver) {
	for (const size_t step : {size_t{4}, size_t{8}}) {
		SCOPED_TRACE(step);
		Elf_image image;
		size_t place = image.put_note(Elf_image::notes, "GNU", 1, "abc", step); // another type
		place = image.put_note(place, "XYZ", 3, "0000", step);                  // another owner
		place = image.put_note(place, "stranger", 3, "0000", step);
		place = image.put_note(place, "GNU", 3, "", step); // no id at all
		place = image.put_note(place, "GNU", 3, Elf_image::build_id(), step);
		image.put_segment(1, 4, Elf_image::notes, place - Elf_image::notes, step);
		const Reading reading = read(image);
		EXPECT_TRUE(reading.result);
		EXPECT_EQ(reading.module.pdb_guid.data1, 0x33323130u);
	}
}

TEST(image_identity, ImageWithoutBuildIdHasItsSizeOnly) {
	Elf_image image;
	image.put(Elf_image::notes + 8, xylUInt32{5});
	const Reading reading = read(image);
	expect_no_identity(reading);
	EXPECT_EQ(reading.module.image_size, 0x3000u);
}

TEST(image_identity, DamagedElfImagesHaveNoIdentity) {
	struct Case {
		const char* name;
		size_t place;
		xylUInt64 value;
		size_t size;
	};
	const Case cases[] = {
		{"magic", 3, 'G', 1},
		{"32 bits", 4, 1, 1},
		{"big-endian", 5, 2, 1},
		{"table far off", 32, 0x10000, 8},
		{"table before the image", 32, ~0ull - 63, 8},
		{"headers too small", 54, 55, 2},
		{"more headers than bytes", 56, 0xFFFF, 2},
		{"no headers", 56, 0, 2},
		{"nothing loaded", Elf_image::table, 7, 4},
		{"notes behind the end", Elf_image::table + 56 + 16, 0x400, 8},
		{"notes far off", Elf_image::table + 56 + 16, 1ull << 63, 8},
		{"name longer than anything", Elf_image::notes, 0xFFFFFFFF, 4},
		{"id longer than the image", Elf_image::notes + 4, 0x300, 4},
		{"id longer than anything", Elf_image::notes + 4, 0xFFFFFFFF, 4},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Elf_image image;
		image.put_bytes(c.place, &c.value, c.size);
		expect_no_identity(read(image));
	}
}

TEST(image_identity, SizeReachesFromTheFirstLoadedSegmentToTheLast) {
	Elf_image image(0x400000);
	image.put(56, xylUInt16{4});
	image.put_segment(0, 4, 0x400000 + Elf_image::notes, 36, 4); // the notes in front of all
	image.put_segment(1, 1, 0x400000, 0x400, 0x1000);
	image.put_segment(2, 1, 0x402000, 0x1001, 0x1000);
	image.put_segment(3, 1, 0x404800, 0x900, 0x1000);
	const Reading reading = read(image);
	EXPECT_TRUE(reading.result);
	EXPECT_EQ(reading.module.image_size, 0x6000u);
	EXPECT_EQ(reading.module.pdb_guid.data1, 0x33323130u);
}

TEST(image_identity, NotesAreThoseOfAnySegmentAndOfNothingBehindIt) {
	Elf_image image;
	const size_t behind = image.put_note(Elf_image::notes, "GNU", 5, "property");
	const size_t end = image.put_note(behind, "GNU", 3, Elf_image::build_id());
	image.put_segment(1, 4, Elf_image::notes, behind - Elf_image::notes, 4);
	expect_no_identity(read(image)); // the id is behind the segment's end
	image.put(56, xylUInt16{3});
	image.put_segment(2, 4, behind, end - behind, 4);
	EXPECT_EQ(read(image).module.pdb_guid.data1, 0x33323130u);
}

// The system may tell what is readable in pieces, with a border anywhere.
TEST(image_identity, PiecesSideBySideAreOneImage) {
	static const unsigned char* border;
	const auto readable_to_border = [](const void* address) {
		const size_t all = readable_bytes(address);
		const auto* place = static_cast<const unsigned char*>(address);
		return all > 0 && place < border ? static_cast<size_t>(border - place) : all;
	};
	for (const Image_builder& whole : {static_cast<const Image_builder&>(Windows_image()),
	                                   static_cast<const Image_builder&>(Elf_image())}) {
		const Reading expected = read(whole);
		const std::vector<unsigned char> block(whole.bytes);
		readable_block = &block;
		for (size_t place = 1; place < block.size(); ++place) {
			SCOPED_TRACE(place);
			border = block.data() + place;
			zubCallstack_module module;
			module.name = "game.so";
			module.base_address = reinterpret_cast<size_t>(block.data());
			ASSERT_TRUE(read_image_identity(module, readable_to_border));
			ASSERT_EQ(module.image_size, expected.module.image_size);
			ASSERT_EQ(module.pdb_guid, expected.module.pdb_guid);
			ASSERT_EQ(module.pdb_age, expected.module.pdb_age);
			ASSERT_STREQ(module.pdb_name.char_p(), expected.module.pdb_name.char_p());
		}
	}
}

// A table that lies in front of the image is none, though the memory there may be read.
TEST(image_identity, NothingInFrontOfTheImageIsRead) {
	const Elf_image image;
	const auto table = image.bytes.begin() + Elf_image::table;
	std::vector<unsigned char> block(table, table + 2 * 56);
	const size_t base = block.size();
	block.insert(block.end(), image.bytes.begin(), image.bytes.end());
	readable_block = &block;
	for (const xylUInt64 place : {Elf_image::table, 0 - xylUInt64{base}}) {
		std::memcpy(&block[base + 32], &place, sizeof(place));
		zubCallstack_module module;
		module.base_address = reinterpret_cast<size_t>(block.data()) + base;
		EXPECT_EQ(read_image_identity(module, readable_bytes), place == Elf_image::table);
	}
}

TEST(image_identity, NothingReadableIsNoImage) {
	readable_block = nullptr;
	zubCallstack_module module;
	EXPECT_FALSE(read_image_identity(module, [](const void*) { return size_t{0}; }));
}

// Every length of a good image, and random damage to one: the sanitizers look on.
TEST(image_identity, CutAndDamagedImagesAreSurvived) {
	std::mt19937 random(20260711);
	for (const Image_builder& whole : {static_cast<const Image_builder&>(Windows_image()),
	                                   static_cast<const Image_builder&>(Elf_image())}) {
		int complete = 0;
		for (size_t size = 0; size <= whole.bytes.size(); ++size) {
			Image_builder cut;
			cut.bytes.assign(whole.bytes.begin(),
			                 whole.bytes.begin() + static_cast<std::ptrdiff_t>(size));
			complete += read(cut).result;
		}
		EXPECT_GT(complete, 0);
		EXPECT_LT(complete, 0x201);
		for (int i = 0; i < 20000; ++i) {
			Image_builder damaged = whole;
			for (unsigned int left = 1 + random() % 4; left > 0; --left) {
				damaged.bytes[random() % 0x320] = static_cast<unsigned char>(random());
			}
			const Reading reading = read(damaged);
			if (reading.result && reading.module.pdb_signature != 0) {
				ASSERT_EQ(reading.module.pdb_signature, 0x53445352u);
			}
		}
	}
}
