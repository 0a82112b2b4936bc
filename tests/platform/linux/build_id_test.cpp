// First pages of images, whole and damaged.
#include <morvantis/platform/system/linux/build_id.h>

#include "frame_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include <elf.h>

namespace {

constexpr size_t page_size = 4096;

// A page of exactly its size.
class Page {
public:
	Page() : bytes_(new unsigned char[page_size]()) {}

	template <typename T> void put(size_t place, const T& value) {
		std::memcpy(&bytes_[place], &value, sizeof(value));
	}
	void put_bytes(size_t place, const Bytes& bytes) {
		std::memcpy(&bytes_[place], bytes.data(), bytes.size());
	}
	unsigned char* data() const { return bytes_.get(); }
	// Where the build id was found; -1 for nowhere.
	long found() const {
		const unsigned char* const id = os::find_build_id(data());
		return id ? id - data() : -1;
	}

private:
	std::unique_ptr<unsigned char[]> bytes_;
};

Bytes note(const Bytes& name, unsigned int type, const Bytes& content, size_t step = 4) {
	Bytes bytes = raw(static_cast<unsigned int>(name.size())) +
	              raw(static_cast<unsigned int>(content.size())) + raw(type) + name;
	const auto pad = [&] { bytes.resize((bytes.size() + step - 1) / step * step); };
	pad();
	bytes += content;
	pad();
	return bytes;
}

const Bytes gnu("GNU", 4);
const Bytes id(20, 'i');

struct Note_segment {
	Bytes notes;
	xylUInt64 address = 0x300;
	xylUInt64 align = 4;
};

// An image whose first segment was linked for `start`.
Page page_with(const std::vector<Note_segment>& segments, xylUInt64 start = 0) {
	Page page;
	Elf64_Ehdr header{};
	std::memcpy(header.e_ident, ELFMAG, SELFMAG);
	header.e_phoff = sizeof(header);
	header.e_phnum = static_cast<Elf64_Half>(segments.size() + 1);
	page.put(0, header);
	Elf64_Phdr segment{};
	segment.p_type = PT_LOAD;
	segment.p_vaddr = start;
	segment.p_memsz = 0x10000;
	size_t place = sizeof(header);
	page.put(place, segment);
	for (const Note_segment& notes : segments) {
		segment.p_type = PT_NOTE;
		segment.p_vaddr = start + notes.address;
		segment.p_memsz = notes.notes.size();
		segment.p_align = notes.align;
		page.put(place += sizeof(segment), segment);
		if (notes.address + notes.notes.size() <= page_size) {
			page.put_bytes(notes.address, notes.notes);
		}
	}
	return page;
}

} // namespace

TEST(Build_id, IsFoundInTheFirstPage) {
	struct Case {
		const char* name;
		std::vector<Note_segment> segments;
		long found;
	};
	const Case cases[] = {
		{"the only note", {{note(gnu, 3, id)}}, 0x300 + 16},
		{"eight bytes", {{note(gnu, 3, id.substr(0, 8))}}, 0x300 + 16},
		{"behind another note", {{note(gnu, 1, "abcde") + note(gnu, 3, id)}}, 0x300 + 24 + 16},
		{"behind one aligned to 8",
	     {{note(gnu, 5, "0123", 8) + note(gnu, 3, id, 8), 0x300, 8}},
	     0x300 + 24 + 16},
		{"in the second segment", {{note(gnu, 1, "abcd")}, {note(gnu, 3, id), 0x400}}, 0x410},
		{"at the page's end", {{note(gnu, 3, id), page_size - 36}}, page_size - 20},
		{"behind an owner without name", {{note("", 3, id) + note(gnu, 3, id)}}, 0x300 + 32 + 16},
		{"no segments", {}, -1},
		{"no notes", {{""}}, -1},
		{"other type", {{note(gnu, 1, id)}}, -1},
		{"other owner", {{note(Bytes("GNV", 4), 3, id)}}, -1},
		{"longer owner", {{note(Bytes("GNUs", 5), 3, id)}}, -1},
		{"seven bytes", {{note(gnu, 3, id.substr(0, 7))}}, -1},
		{"behind the page", {{note(gnu, 3, id), page_size}}, -1},
		{"over the page's end", {{note(gnu, 3, id), page_size - 35}}, -1},
		{"far away", {{note(gnu, 3, id), ~0ULL - 100}}, -1},
		{"cut note", {{note(gnu, 3, id).substr(0, 30)}}, -1},
		{"cut header", {{note(gnu, 3, id).substr(0, 10)}}, -1},
		{"name of all the memory", {{raw(~0u) + raw(20) + raw(3) + gnu + id}}, -1},
		{"content of all the memory", {{raw(4) + raw(~0u) + raw(3) + gnu + id}}, -1},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(page_with(c.segments).found(), c.found);
		EXPECT_EQ(page_with(c.segments, 0x400000).found(), c.found);
	}
}

// Linkers of some languages write the segments in this order.
TEST(Build_id, IsFoundAheadOfTheLoadedSegment) {
	for (const xylUInt64 start : {0x0ull, 0x400000ull}) {
		SCOPED_TRACE(start);
		Page page = page_with({{note(gnu, 3, id)}}, start);
		constexpr size_t first = sizeof(Elf64_Ehdr), second = first + sizeof(Elf64_Phdr);
		std::swap_ranges(page.data() + first, page.data() + second, page.data() + second);
		EXPECT_EQ(page.found(), 0x310);
		page.put(second, Elf64_Word{PT_NULL}); // nothing loaded
		EXPECT_EQ(page.found(), -1);
	}
}

TEST(Build_id, NeedsAnImage) {
	Page page = page_with({{note(gnu, 3, id)}});
	page.data()[0] = 0;
	EXPECT_EQ(page.found(), -1);
}

TEST(Build_id, IsSoughtInsideOfThePageOnly) {
	const Page whole = page_with({{note(gnu, 1, "abcde") + note(gnu, 3, id), 0x300}});
	std::mt19937 random(3);
	int found = 0;
	for (int i = 0; i < 20000; ++i) {
		Page page;
		std::memcpy(page.data(), whole.data(), page_size);
		for (int changes = 0; changes < 1 + i % 4; ++changes) {
			const size_t place = random() % (i % 2 ? 0x40 + 2 * 56 : page_size);
			page.data()[place] = static_cast<unsigned char>(random());
		}
		const long place = page.found();
		EXPECT_LE(place, static_cast<long>(page_size - 8));
		found += place >= 0;
	}
	EXPECT_GT(found, 0);
	EXPECT_LT(found, 20000);
}
