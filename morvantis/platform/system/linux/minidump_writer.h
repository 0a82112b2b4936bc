// Writes this process into a minidump file.
#pragma once

#include <morvantis/platform/system/dump.h>
#include <morvantis/platform/system/linux/dump_output.h>
#include <morvantis/platform/system/linux/elf_image.h>
#include <morvantis/platform/system/linux/held_threads.h>
#include <morvantis/platform/system/linux/memory_map.h>
#include <morvantis/platform/system/linux/minidump_format.h>

#include <array>
#include <csignal>
#include <type_traits>

namespace os {

// All that a dump needs is in the object, since a damaged process has no heap; it is too large for
// a stack and all zeros until it is used. The order of the file: header, directory, the kernel's
// list of mappings, then modules, registers and stacks as they are found, the lists of them, and
// what goes without the other threads being held.
class Minidump_writer {
public:
	// One dump. The other threads are held until their stacks are copied.
	void write(const Dump& dump, const Exception_pointers& exception);

private:
	static constexpr size_t most_streams = 16;
	static constexpr size_t most_modules = 512;
	static constexpr size_t most_threads = most_held_threads + 1; // and the calling one
	static constexpr size_t most_areas = 16; // around the registers and the instruction
	static constexpr size_t most_ranges = most_threads + most_areas;
	static constexpr size_t path_size = 4096;

	// What is known of a thread before its record is written.
	struct Known_thread {
		xylUInt32 id;
		minidump::Context context;
		xylUInt64 stack_start, stack_end; // both 0 until the mapping is found
	};
	// An image some of whose mappings have been seen.
	struct Known_image {
		xylUInt64 base; // 0: none
		bool executable;
		Elf_image elf;
		std::array<char, path_size> path;
	};

	void start(const Dump& dump, const Exception_pointers& exception);
	void collect_threads();
	Known_thread& next_thread(xylUInt32 id);
	// The mappings: their text, the threads' stacks, the images.
	void write_mappings();
	void find_stacks(const Mapping& mapping);
	void follow_image(const Mapping& mapping);
	void finish_image();
	// Registers and stacks.
	void write_threads();
	void write_surroundings();
	void write_area(xylUInt64 address);
	void add_range(const minidump::Memory_range& range);
	// The lists and the small records.
	template <typename Record>
	void write_list(minidump::Stream_type type, const Record* records, size_t count);
	void write_exception();
	void write_system_info();
	void write_misc_info();
	void write_texts();
	void write_directory();

	minidump::Location append_record(const void* record, size_t size);
	xylUInt32 append_text(const char* text);
	void begin_stream();
	void end_stream(minidump::Stream_type type);

	xylUInt32 process_id_, thread_id_; // whose dump it is, and who writes it
	siginfo_t record_;
	Dump_output output_;
	xylUInt32 stream_start_;
	size_t stream_count_, thread_count_, module_count_, range_count_;
	size_t program_index_; // of the module that is the program
	std::array<minidump::Directory_entry, most_streams> streams_;
	std::array<Known_thread, most_threads> known_threads_; // the calling one first
	std::array<minidump::Thread, most_threads> threads_;
	std::array<minidump::Module, most_modules> modules_;
	std::array<minidump::Memory_range, most_ranges> ranges_;
	Known_image image_;
	Line_reader lines_;
};
static_assert(std::is_trivially_default_constructible_v<Minidump_writer>,
              "a static one needs nothing done at load");

} // namespace os
