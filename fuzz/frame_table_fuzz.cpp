// The walker of call frame information, on images of any bytes: nothing outside of them is read,
// and rules that are found can be applied.
//
// The first two bytes of the input are where the address lies, from the index on; the rest is the
// image, which begins with its index.
#include "input.h"

#include <morvantis/platform/system/linux/frame_rules.h>
#include <morvantis/platform/system/linux/frame_table.h>

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

// The only memory that expressions may read.
unsigned char memory[256];

bool read_memory(xylUInt64 address, unsigned int size, xylUInt64& value) {
	const xylUInt64 offset = address - reinterpret_cast<xylUInt64>(memory);
	if (size > 8 || offset > sizeof(memory) - size) return false;
	value = 0;
	std::memcpy(&value, memory + offset, size);
	return true;
}

void check_rules(const os::Frame_rules& rules) {
	require(rules.cfa_register < os::frame_register_count);
	for (unsigned int i = 0; i < os::frame_register_count; ++i) {
		if (rules.kinds[i] != os::Frame_rule_kind::in_register) continue;
		require(rules.operands[i] < os::frame_register_count);
	}
	os::Frame_registers registers;
	for (xylUInt64& value : registers.value) value = reinterpret_cast<xylUInt64>(memory) + 128;
	const os::Frame_registers before = registers;
	if (os::apply_frame_rules(rules, registers, read_memory)) return;
	require(std::memcmp(&registers, &before, sizeof(before)) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	if (size < 2) return 0;
	std::uint16_t offset;
	std::memcpy(&offset, data, sizeof(offset));
	size -= sizeof(offset);
	// A block of exactly the image's size, so that a byte too far is seen.
	const std::unique_ptr<unsigned char[]> image(new unsigned char[size]);
	std::memcpy(image.get(), data + sizeof(offset), size);
	const os::Frame_table table{image.get(), image.get(), image.get() + size};
	const xylUInt64 address = reinterpret_cast<xylUInt64>(image.get()) + offset;
	os::Frame_rules rules;
	if (os::find_frame_rules(table, address, rules)) check_rules(rules);
	return 0;
}
