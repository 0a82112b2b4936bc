// Images of either system, put together byte by byte, for tests of what is read from them.
#pragma once

#include <morvantis/core/xylguid.h>
#include <morvantis/core/xyltypes.h>

#include <cstring>
#include <string>
#include <vector>

// Bytes that grow where they are written to.
class Image_builder {
public:
	template <typename T> Image_builder& put(size_t place, const T& value) {
		return put_bytes(place, &value, sizeof(value));
	}
	Image_builder& put_text(size_t place, const std::string& text) {
		return put_bytes(place, text.c_str(), text.size() + 1);
	}
	Image_builder& put_bytes(size_t place, const void* source, size_t size) {
		if (bytes.size() < place + size) bytes.resize(place + size);
		std::memcpy(bytes.data() + place, source, size);
		return *this;
	}

	std::vector<unsigned char> bytes;
};

// An image as Windows loads it: headers at 0x80, debug directory at 0x200, records from 0x300 on.
class Windows_image : public Image_builder {
public:
	static constexpr xylUInt32 nt = 0x80, directory = 0x200, record = 0x300;
	static constexpr xylGuid_type guid = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};

	Windows_image() {
		put_bytes(0, "MZ", 2);
		put(60, nt);
		put(nt + 8, xylUInt32{0x5F000001}); // time stamp
		put(nt + 22, xylUInt16{0x0022});    // characteristics
		put(nt + 80, xylUInt32{0x4000});    // size of the image
		put(nt + 184, directory).put(nt + 188, xylUInt32{28});
		put_entry(0, 2, 64, record);
		put_record(record, guid, 7, "C:\\build\\game.pdb");
		bytes.resize(0x400);
	}
	void put_entry(size_t no, xylUInt32 type, xylUInt32 size, xylUInt32 place) {
		const size_t entry = directory + no * 28;
		put(entry + 12, type).put(entry + 16, size).put(entry + 20, place);
	}
	void put_record(size_t place, const xylGuid_type& id, xylUInt32 age, const std::string& name) {
		put_bytes(place, "RSDS", 4).put(place + 4, id).put(place + 20, age);
		put_text(place + 24, name);
	}
};

// An image as Linux loads it: program headers at 0x40, one loaded segment of the whole, notes at
// 0x200.
class Elf_image : public Image_builder {
public:
	static constexpr xylUInt64 table = 0x40, notes = 0x200;

	explicit Elf_image(xylUInt64 base = 0) {
		put_bytes(0,
		          "\x7F"
		          "ELF\2\1\1",
		          7);
		put(32, table).put(54, xylUInt16{56}).put(56, xylUInt16{2});
		put_segment(0, 1, base, 0x2345, 0x1000);
		put_segment(1, 4, base + notes, 36, 4);
		put_note(notes, "GNU", 3, build_id());
		bytes.resize(0x400);
	}
	static std::string build_id() { return "0123456789ABCDEFGHIJ"; }
	void put_segment(size_t no, xylUInt32 type, xylUInt64 address, xylUInt64 size,
	                 xylUInt64 alignment) {
		const size_t place = table + no * 56;
		put(place, type).put(place + 16, address).put(place + 40, size).put(place + 48, alignment);
	}
	// Returns where the next note begins.
	size_t put_note(size_t place, const std::string& owner, xylUInt32 type,
	                const std::string& content, size_t step = 4) {
		const auto padded = [step](size_t size) { return (size + step - 1) / step * step; };
		put(place, static_cast<xylUInt32>(owner.size() + 1));
		put(place + 4, static_cast<xylUInt32>(content.size())).put(place + 8, type);
		put_text(place + 12, owner);
		const size_t behind = place + padded(12 + owner.size() + 1);
		put_bytes(behind, content.data(), content.size());
		return place + padded(behind - place + content.size());
	}
};
