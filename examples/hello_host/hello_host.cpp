// The smallest useful host: it brings the library up, is told a warning, and packs two fields of a
// packet into 24 bits.

#include <morvantis/library.h>

#include <cstdio>
#include <new>

namespace {

// Everything the library says or asks arrives here, on the thread that called the library.
class Host : public zubLibrary_interface {
	void error(const char* text, int) override { std::printf("error: %s\n", text); }
	void warning(const char* text, int) override { std::printf("warning: %s\n", text); }
	void content_warning(const char* text, int) override { std::printf("content: %s\n", text); }
	void failed_assert(const char*, int, const char*, bool, bool) override {}
	void simple_assert(const char*, int, const char*) override {}
	void log(const char* text) override { std::printf("log: %s\n", text); }
	bool get_assert_on_exceptions() override { return false; }
	bool get_enable_deterministic_mode() override { return false; }
	bool get_disable_gui_messages() override { return false; }
	bool delete_later_queue_has_element(xylReference_counted_object*) override { return false; }
	void add_delete_later_queue(xylReference_counted_object*) override {}
};

// On-screen lines. The library frees this object when it is replaced, so it lives on its heap.
class Screen : public zubMessage_interface {
	void post_warning_line(const char* text) override { std::printf("screen: %s\n", text); }
	void post_success_line(const char* text) override { std::printf("screen: %s\n", text); }
	void post_message_line_formatted(unsigned int, const char* text) override {
		std::printf("screen: %s\n", text);
	}
	void post_message_line(const xylVarString& text, const int&) override {
		std::printf("screen: %s\n", text.char_p());
	}
};

// What both ends of the wire agree on: the bounds of a field, and the bits that hold it.
constexpr Integer_compression_info health_info{0, 100, 7};
constexpr Float_compression_info height_info{-64.0f, 64.0f, 0.0009765625f, 17};

} // namespace

int main() {
	Host host;
	zubLibrary::initialize(&host, new (xyl_heap_allocate(sizeof(Screen))) Screen);

	Dynamic_bit_buffer packet;
	Write_bit_buffer& out = packet.as_write_bit_buffer();
	out.serial_op(73, health_info);
	out.serial_op_float(1.75f, height_info);
	std::printf("%d bits in %d bytes\n", packet.get_size_in_bits(), packet.size_in_bytes());

	packet.rewind();
	Read_bit_buffer& in = packet.as_read_bit_buffer();
	int health = 0;
	float height = 0;
	if (!in.serial_op(health, health_info) || !in.serial_op_float(height, height_info)) {
		xyl_warning("a damaged packet of %d bits", packet.get_size_in_bits());
		return 1;
	}
	xylVarString line("health ");
	line.append(health);
	line.append(", height ");
	line.append(height);
	xyl_post_success_line("%s", line.char_p());

	// Nothing is left: a read past the end says so, and the host decides what that means.
	if (!in.serial_op(health, health_info)) xyl_warning("%s", "the packet ends here");
	return health == 73 && height == 1.75f ? 0 : 1;
}
