// Call frame information and its index, put together byte by byte.
#pragma once

#include <morvantis/platform/system/linux/frame_table.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

using Bytes = std::string;

inline Bytes uleb(xylUInt64 value) {
	Bytes bytes;
	do {
		const auto low = static_cast<unsigned char>(value & 0x7F);
		value >>= 7;
		bytes += static_cast<char>(value != 0 ? low | 0x80 : low);
	} while (value != 0);
	return bytes;
}

inline Bytes sleb(xylInt64 value) {
	for (Bytes bytes;;) {
		const auto low = static_cast<unsigned char>(value & 0x7F);
		value >>= 7;
		const bool is_last = (value == 0 && !(low & 0x40)) || (value == -1 && (low & 0x40));
		bytes += static_cast<char>(is_last ? low : low | 0x80);
		if (is_last) return bytes;
	}
}

template <typename T> Bytes raw(T value) {
	Bytes bytes(sizeof(value), 0);
	std::memcpy(bytes.data(), &value, sizeof(value));
	return bytes;
}

// "\x41\x0e\x10" is easier to read as bytes({0x41, 0x0E, 16}).
inline Bytes bytes(std::initializer_list<int> values) {
	Bytes result;
	for (const int value : values) result += static_cast<char>(value);
	return result;
}

// What one function's entries hold.
struct Frame_bytes {
	unsigned int start = 0; // from the index on
	unsigned int size = 0;
	Bytes instructions;
	// Of the common entry:
	int version = 1;
	Bytes augmentation = "zR";
	Bytes augmentation_data = bytes({0x1B}); // relative to itself, 32 bits with a sign
	Bytes first_instructions = bytes({0x0C, 7, 8, 0x90, 1}); // CFA = rsp + 8, pc at CFA - 8
	int code_factor = 1;
	int data_factor = -8;
	int return_register = 16;
	// The start as the pointer encoding wants it; empty for 32 bits relative to itself.
	Bytes start_bytes = {};
	Bytes size_bytes = {};
};

// An image that holds nothing but its table, in a block of exactly its size.
class Table_image {
public:
	// The functions must be in the order of their starts.
	explicit Table_image(const std::vector<Frame_bytes>& functions) {
		const size_t index_size = 12 + 8 * functions.size();
		Bytes frames;
		std::vector<size_t> places;
		for (const Frame_bytes& function : functions) {
			append(frames, index_size, function, places);
		}
		Bytes all = bytes({1, 0x1B, 0x03, 0x3B}) + raw(static_cast<int>(index_size) - 4) +
		            raw(static_cast<unsigned int>(functions.size()));
		for (size_t i = 0; i < functions.size(); ++i) {
			all += raw(functions[i].start) + raw(static_cast<unsigned int>(places[i]));
		}
		assign(all + frames + raw(0));
	}
	explicit Table_image(const Bytes& all) { assign(all); }

	os::Frame_table table() const { return {block_.get(), block_.get(), block_.get() + size_}; }
	xylUInt64 address(xylUInt64 offset) const {
		return reinterpret_cast<xylUInt64>(block_.get()) + offset;
	}
	Bytes content() const { return {reinterpret_cast<const char*>(block_.get()), size_}; }

private:
	void assign(const Bytes& all) {
		size_ = all.size();
		block_.reset(new unsigned char[size_]);
		std::memcpy(block_.get(), all.data(), size_);
	}

	static void append(Bytes& frames, size_t before, const Frame_bytes& function,
	                   std::vector<size_t>& places) {
		const size_t common_place = frames.size();
		Bytes common = raw(0) + bytes({function.version}) + function.augmentation + bytes({0}) +
		               uleb(static_cast<xylUInt64>(function.code_factor)) +
		               sleb(function.data_factor) + bytes({function.return_register});
		const bool has_data = function.augmentation[0] == 'z';
		if (has_data)
			common += uleb(function.augmentation_data.size()) + function.augmentation_data;
		common += function.first_instructions;
		frames += raw(static_cast<unsigned int>(common.size())) + common;

		places.push_back(before + frames.size());
		const size_t id_place = frames.size() + 4;
		Bytes entry = raw(static_cast<unsigned int>(id_place - common_place));
		const auto start_place = static_cast<unsigned int>(before + id_place + 4);
		entry +=
			function.start_bytes.empty() ? raw(function.start - start_place) : function.start_bytes;
		entry += function.size_bytes.empty() ? raw(function.size) : function.size_bytes;
		if (has_data) entry += bytes({0});
		entry += function.instructions;
		frames += raw(static_cast<unsigned int>(entry.size())) + entry;
	}

	std::unique_ptr<unsigned char[]> block_;
	size_t size_ = 0;
};
