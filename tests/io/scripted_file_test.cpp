#include "../platform/scripted_system.h"
#include "scripted_file.h"

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylnative_file.h>
#include <morvantis/io/xylnative_file_async.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Piece = Scripted_file::Piece;

constexpr xylUInt32 mib = 1 << 20;

// Memory that is never touched.
char* const memory = reinterpret_cast<char*>(0x10000);

class Scripted_file_test : public testing::Test {
protected:
	void SetUp() override {
		scripted_system = {};
		scripted_file = {};
	}
	static os::File_request request_for(int access, int mode) {
		xylNative_file file("file", access, mode);
		return scripted_file.request;
	}
};

// --- Opening

TEST_F(Scripted_file_test, BitsAreDecodedOneByOne) {
	using Request = os::File_request;
	struct Case {
		const char* name;
		int access, mode;
		Request request;
	};
	const Case cases[] = {
		{"nothing", 0, 0, {}},
		{"read", 1, 0, {.read = true}},
		{"write", 2, 0, {.write = true}},
		{"read and write", 3, 0, {.read = true, .write = true}},
		{"share read", 4, 0, {.share_read = true}},
		{"share write", 8, 0, {.share_write = true}},
		{"unknown access", ~15, 0, {}},
		{"sequential", 0, 1, {.sequential = true}},
		{"temporary", 0, 2, {.temporary = true}},
		{"backup semantics", 0, 32, {.backup_semantics = true}},
		{"archive", 0, 64, {.archive = true}},
		{"system", 0, 128, {.system = true}},
		{"normal", 0, 256, {.normal = true}},
		{"unknown mode", 0, 512, {}},
		{"read-only", 0, 1024, {.read_only = true}},
		{"all attributes and flags",
	     0,
	     1 + 2 + 32 + 64 + 128 + 1024,
	     {.archive = true,
	      .read_only = true,
	      .system = true,
	      .temporary = true,
	      .backup_semantics = true,
	      .sequential = true}},
		{"normal drops all others",
	     15,
	     1 + 2 + 4 + 32 + 64 + 128 + 256 + 1024,
	     {.read = true,
	      .write = true,
	      .share_read = true,
	      .share_write = true,
	      .disposition = 3,
	      .normal = true}},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_TRUE(request_for(c.access, c.mode) == c.request);
		Request overlapped = c.request;
		overlapped.overlapped = true;
		xylNative_file_async file("file", c.access, c.mode);
		EXPECT_TRUE(scripted_file.request == overlapped);
	}
}

TEST_F(Scripted_file_test, DispositionsAreOredTogether) {
	const std::pair<int, xylUInt32> cases[] = {{0, 0},  {4, 3},  {8, 2},  {16, 1},
	                                           {12, 3}, {20, 3}, {24, 3}, {28, 3}};
	for (const auto& [mode, disposition] : cases) {
		SCOPED_TRACE(mode);
		EXPECT_EQ(request_for(1, mode).disposition, disposition);
	}
}

TEST_F(Scripted_file_test, EveryOpenConvertsItsPath) {
	const std::pair<const char*, const char*> cases[] = {
		{"$BASE/a.txt", "../../a.txt"}, {"a.txt", "a.txt"}, {"", ""}, {nullptr, ""}};
	for (const auto& [name, path] : cases) {
		SCOPED_TRACE(path);
		xylNative_file native(name, 1, 4);
		EXPECT_EQ(std::exchange(scripted_file.path, "?"), path);
		xylNative_file_async async(name, 1, 4);
		EXPECT_EQ(std::exchange(scripted_file.path, "?"), path);
		xylFile file(name, "rb");
		EXPECT_EQ(std::exchange(scripted_file.path, "?"), path);
		file.reopen(name, "rb");
		EXPECT_EQ(std::exchange(scripted_file.path, "?"), path);
	}
	EXPECT_EQ(scripted_system.allocations, 0);
}

TEST_F(Scripted_file_test, FailedClosingIsCountedAndMarkedAllTheSame) {
	scripted_file.closes = false;
	xylNative_file file("file", 1, 4);
	EXPECT_EQ(xylNative_file::open_files_count_, 1);
	EXPECT_FALSE(file.close());
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(xylNative_file::open_files_count_, 0);
	xylNative_file_async async("file", 1, 4);
	EXPECT_EQ(xylNative_file::open_files_count_, 0);
	EXPECT_FALSE(async.close());
	EXPECT_FALSE(async.is_valid());
	EXPECT_EQ(scripted_file.endings, "cgc");
}

TEST_F(Scripted_file_test, DestructorsCloseWhatIsOpen) {
	{
		xylNative_file file("file", 1, 4);
		xylNative_file_async async("file", 1, 4);
	}
	EXPECT_EQ(scripted_file.endings, "gcc");
	scripted_file.handle = os::no_file();
	{
		xylNative_file file("file", 1, 4);
		xylNative_file_async async("file", 1, 4);
	}
	EXPECT_EQ(scripted_file.endings, "gcc") << "nothing to close";
}

// --- Reading and writing

TEST_F(Scripted_file_test, ReadsInPiecesOfSixteenMib) {
	struct Case {
		xylUInt64 size;
		std::vector<Piece> pieces;
	};
	const Case cases[] = {
		{0, {}},
		{1, {{memory, 1}}},
		{16 * mib, {{memory, 16 * mib}}},
		{16 * mib + 1, {{memory, 16 * mib}, {memory + 16 * mib, 1}}},
		{40 * mib,
	     {{memory, 16 * mib}, {memory + 16 * mib, 16 * mib}, {memory + 32 * mib, 8 * mib}}},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.size);
		scripted_file.pieces.clear();
		xylNative_file file("file", 1, 4);
		EXPECT_EQ(file.read(memory, c.size), c.size);
		EXPECT_EQ(scripted_file.pieces, c.pieces);
	}
	scripted_file.pieces.clear();
	xylNative_file file("file", 1, 4);
	EXPECT_EQ(file.read(memory, xylUInt64{5} << 30), xylUInt64{5} << 30) << "above 32 bits";
	EXPECT_EQ(scripted_file.pieces.size(), 320u);
}

TEST_F(Scripted_file_test, ShortReadsGoOnUntilOneDeliversNothing) {
	xylNative_file file("file", 1, 4);
	scripted_file.transfers = {30, 50, 0};
	EXPECT_EQ(file.read(memory, 100), 80u);
	EXPECT_THAT(scripted_file.pieces,
	            ElementsAre(Piece{memory, 100}, Piece{memory + 30, 70}, Piece{memory + 80, 20}));
	scripted_file.transfers = {99};
	EXPECT_EQ(file.read(memory, 100), 100u) << "one byte in a second call";
	scripted_file.transfers = {0};
	EXPECT_EQ(file.read(memory, 100), 0u);
}

TEST_F(Scripted_file_test, FailedReadForgetsWhatArrived) {
	xylNative_file file("file", 1, 4);
	scripted_file.transfers = {16 * mib, -1};
	EXPECT_EQ(file.read(memory, 40 * mib), 0u);
	EXPECT_EQ(scripted_file.pieces.size(), 2u) << "nothing was tried again";
}

TEST_F(Scripted_file_test, InterruptedReadIsMadeAgain) {
	xylNative_file file("file", 1, 4);
	scripted_file.transfers = {30, -1, -1};
	scripted_file.interruptions = 2;
	EXPECT_EQ(file.read(memory, 100), 100u);
	EXPECT_THAT(scripted_file.pieces, ElementsAre(Piece{memory, 100}, Piece{memory + 30, 70},
	                                              Piece{memory + 30, 70}, Piece{memory + 30, 70}));
}

TEST_F(Scripted_file_test, WritesWhatThirtyTwoBitsCanSay) {
	xylNative_file file("file", 2, 8);
	EXPECT_EQ(file.write(memory, 0), 0u);
	EXPECT_THAT(scripted_file.pieces, IsEmpty());
	EXPECT_EQ(file.write(memory, 0xFFFFFFFF), 0xFFFFFFFF);
	EXPECT_THAT(scripted_file.pieces, ElementsAre(Piece{memory, 0xFFFFFFFF}));
	scripted_file.pieces.clear();
	EXPECT_EQ(file.write(memory, 0x200000003), 0x200000003u);
	EXPECT_THAT(scripted_file.pieces,
	            ElementsAre(Piece{memory, 0xFFFFFFFF}, Piece{memory + 0xFFFFFFFF, 0xFFFFFFFF},
	                        Piece{memory + 0x1FFFFFFFE, 5}));
}

// A full disk, until somebody makes room.
TEST_F(Scripted_file_test, FailedWritesAreRepeated) {
	xylNative_file file("file", 2, 8);
	scripted_file.transfers = {60};
	scripted_file.transfers.insert(scripted_file.transfers.end(), 500, -1);
	scripted_file.transfers.insert(scripted_file.transfers.end(), 500, 0);
	EXPECT_EQ(file.write(memory, 100), 100u);
	ASSERT_EQ(scripted_file.pieces.size(), 1002u);
	EXPECT_EQ(scripted_file.pieces[0], (Piece{memory, 100}));
	for (size_t i = 1; i < scripted_file.pieces.size(); ++i) {
		ASSERT_EQ(scripted_file.pieces[i], (Piece{memory + 60, 40}));
	}
}

TEST_F(Scripted_file_test, PointerHandsOffsetAndAnswerOn) {
	xylNative_file file("file", 1, 4);
	const std::pair<int, os::File_origin> cases[] = {
		{0, os::File_origin::start}, {1, os::File_origin::current}, {2, os::File_origin::end},
		{3, os::File_origin::start}, {-1, os::File_origin::start},
	};
	for (const auto& [from, origin] : cases) {
		SCOPED_TRACE(from);
		scripted_file.position = 0x123456789;
		EXPECT_EQ(file.set_pointer(0xFEDCBA9876543210, static_cast<xylFile_starting_point>(from)),
		          0x123456789);
		EXPECT_EQ(scripted_file.offset, 0xFEDCBA9876543210);
		EXPECT_EQ(scripted_file.origin, origin);
	}
}

TEST_F(Scripted_file_test, SizeIsAllBitsSetWhenTheSystemWontSay) {
	xylNative_file file("file", 1, 4);
	scripted_file.size = 0x123456789;
	EXPECT_EQ(file.get_file_size(), 0x123456789u);
	xylNative_file_async async("file", 1, 4);
	EXPECT_EQ(async.get_file_size(), 0x123456789u);
	scripted_file.has_size = false;
	EXPECT_EQ(file.get_file_size(), ~xylUInt64{0});
}

// --- Overlapped reads

TEST_F(Scripted_file_test, OverlappedReadStartsAtTheLowHalfOfThePosition) {
	xylNative_file_async file("file", 1, 4);
	EXPECT_EQ(file.set_pointer(0x123456789, xylFile_from_end), 0x123456789);
	for (int i = 0; i < 2; ++i) {
		file.read(memory, 0x500000002);
		EXPECT_TRUE(scripted_file.record_was_clear);
		EXPECT_EQ(scripted_file.offset, 0x23456789u);
		EXPECT_EQ(scripted_file.pieces.back(), (Piece{memory, 2})) << "the size has 32 bits";
		EXPECT_EQ(file.read_position, 0x123456789u);
	}
	EXPECT_EQ(scripted_file.pieces.size(), 2u) << "and is read in one piece";
	EXPECT_EQ(file.set_pointer(~xylUInt64{0}, xylFile_from_start), -1);
}

TEST_F(Scripted_file_test, StatusIsTheSystems) {
	xylNative_file_async file("file", 1, 4);
	const std::pair<os::Overlapped_state, xylAsync_io_status> cases[] = {
		{os::Overlapped_state::failed, xylAsync_io_failed},
		{os::Overlapped_state::pending, xylAsync_io_pending},
		{os::Overlapped_state::completed, xylAsync_io_completed},
	};
	for (const auto& [state, status] : cases) {
		for (const bool wait : {false, true}) {
			SCOPED_TRACE(status);
			scripted_file.state = state;
			scripted_file.overlapped_count = 0xFFFFFFFF;
			xylUInt64 count = ~xylUInt64{0};
			EXPECT_EQ(file.get_async_status(&count, wait), status);
			EXPECT_EQ(count, 0xFFFFFFFFu) << "stored in any case";
			EXPECT_EQ(scripted_file.waited, wait);
			EXPECT_EQ(file.get_async_status(nullptr, wait), status);
		}
	}
}

TEST_F(Scripted_file_test, OverlappedWriteAsksNothingOfTheSystem) {
	xylNative_file_async file("file", 3, 8);
	file.write(memory, 100);
	file.write(memory, 100);
	EXPECT_THAT(scripted_file.pieces, IsEmpty());
	EXPECT_THAT(scripted_system.reports,
	            ElementsAre("debug output: Not implemented: xylNative_file_async::write "
	                        "(xylnative_file:776)\n"));
}

} // namespace
