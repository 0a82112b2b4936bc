#include <morvantis/platform/system/linux/minidump_writer.h>

#include <morvantis/platform/system/linux/own_memory.h>
#include <morvantis/platform/system/processor.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/auxv.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

using namespace os::minidump;

constexpr xylUInt64 red_zone = 128;           // below the stack pointer, in use all the same
constexpr xylUInt64 most_stack = 256 << 10;   // bytes of one thread's, from the innermost frame on
constexpr xylUInt64 overrun_reach = 1 << 20;  // how far below its stack a thread may have run
constexpr xylUInt64 area_reach = 128;         // bytes copied on each side of an address
constexpr xylUInt32 most_text = 8 << 10;      // of a text of the kernel
constexpr xylUInt32 most_map_text = 4u << 20; // of the list of mappings

// What lies in `from` of the context of a signal.
Context context_of(const ucontext_t& from) {
	const auto registers = [&](int index) {
		return static_cast<xylUInt64>(from.uc_mcontext.gregs[index]);
	};
	Context to{};
	to.flags = full_context;
	to.cs = static_cast<xylUInt16>(registers(REG_CSGSFS));
	to.gs = static_cast<xylUInt16>(registers(REG_CSGSFS) >> 16);
	to.fs = static_cast<xylUInt16>(registers(REG_CSGSFS) >> 32);
	to.ss = static_cast<xylUInt16>(registers(REG_CSGSFS) >> 48);
	to.eflags = static_cast<xylUInt32>(registers(REG_EFL));
	to.rax = registers(REG_RAX);
	to.rcx = registers(REG_RCX);
	to.rdx = registers(REG_RDX);
	to.rbx = registers(REG_RBX);
	to.rsp = registers(REG_RSP);
	to.rbp = registers(REG_RBP);
	to.rsi = registers(REG_RSI);
	to.rdi = registers(REG_RDI);
	to.r8 = registers(REG_R8);
	to.r9 = registers(REG_R9);
	to.r10 = registers(REG_R10);
	to.r11 = registers(REG_R11);
	to.r12 = registers(REG_R12);
	to.r13 = registers(REG_R13);
	to.r14 = registers(REG_R14);
	to.r15 = registers(REG_R15);
	to.rip = registers(REG_RIP);
	const auto saved = reinterpret_cast<xylUInt64>(from.uc_mcontext.fpregs);
	if (os::read_own_memory(saved, to.floating_point, sizeof(to.floating_point)) > 28) {
		std::memcpy(&to.mxcsr, to.floating_point + 24, sizeof(to.mxcsr));
	}
	return to;
}

// Stack pointer and instruction of a thread that waits in the kernel, as the kernel tells: the last
// two numbers of "0 0x0 ... 0x7ffd1000 0x7f001000". A thread that runs has none.
//
// Result  false for a thread that has ended, the first one of the process above all, which stays
//         listed.
bool read_waiting_place(xylUInt32 id, Context* context) {
	char path[64] = "/proc/self/task/";
	char* end = path + std::strlen(path);
	char digits[10];
	size_t count = 0;
	do {
		digits[count++] = static_cast<char>('0' + id % 10);
	} while (id /= 10);
	while (count > 0) *end++ = digits[--count];
	std::strcpy(end, "/syscall");
	char text[256]{};
	const int file = open(path, O_RDONLY | O_CLOEXEC);
	if (file < 0) return errno != ENOENT;
	const ssize_t size = read(file, text, sizeof(text) - 1);
	const bool is_there = size >= 0 || errno != ESRCH;
	close(file);
	if (size <= 0) return is_there;
	xylUInt64 last = 0, one_before = 0;
	bool is_told = false;
	for (const char* c = text; (c = std::strstr(c, " 0x"));) {
		is_told = true;
		one_before = last;
		last = 0;
		for (c += 3; (*c >= '0' && *c <= '9') || (*c >= 'a' && *c <= 'f'); ++c) {
			last = last << 4 | static_cast<xylUInt64>(*c <= '9' ? *c - '0' : *c - 'a' + 10);
		}
	}
	context->flags = full_context;
	context->rsp = one_before;
	context->rip = last;
	return !is_told || one_before != 0;
}

// The next code point of a text in UTF-8. A byte that begins none stands for itself.
xylUInt32 take_code_point(const char*& text) {
	const auto byte = [&](int index) { return static_cast<xylUInt8>(text[index]); };
	const int more = byte(0) >= 0xF0 ? 3 : byte(0) >= 0xE0 ? 2 : byte(0) >= 0xC2 ? 1 : 0;
	xylUInt32 point = more ? byte(0) & (0x3Fu >> more) : byte(0);
	for (int i = 1; i <= more; ++i) {
		if ((byte(i) & 0xC0) != 0x80) {
			point = byte(0);
			++text;
			return point;
		}
		point = point << 6 | (byte(i) & 0x3Fu);
	}
	text += more + 1;
	return point;
}

} // namespace

void os::Minidump_writer::write(const Dump& dump, const Exception_pointers& exception) {
	start(dump, exception);
	collect_threads();
	write_mappings();
	write_threads();
	write_surroundings();
	release_threads();
	// The program comes first: debuggers take the first module for it.
	if (program_index_ != 0) std::swap(modules_[0], modules_[program_index_]);
	write_list(thread_list_stream, threads_.data(), thread_count_);
	write_list(module_list_stream, modules_.data(), module_count_);
	write_list(memory_list_stream, ranges_.data(), range_count_);
	write_exception();
	write_system_info();
	write_misc_info();
	write_texts();
	write_directory();
}

void os::Minidump_writer::start(const Dump& dump, const Exception_pointers& exception) {
	process_id_ = dump.process_id;
	thread_id_ = dump.thread_id;
	output_.start(static_cast<int>(reinterpret_cast<size_t>(dump.file)));
	stream_count_ = thread_count_ = module_count_ = range_count_ = program_index_ = 0;
	image_.base = 0;
	streams_ = {};
	const Header header{}; // both once more at the end, when all is known
	output_.append(&header, sizeof(header));
	output_.append(streams_.data(), sizeof(streams_));
	record_ = {};
	read_own_memory(reinterpret_cast<xylUInt64>(exception.record), &record_, sizeof(record_));
	ucontext_t context{};
	read_own_memory(reinterpret_cast<xylUInt64>(exception.context), &context, sizeof(context));
	next_thread(thread_id_).context = context_of(context);
}

os::Minidump_writer::Known_thread& os::Minidump_writer::next_thread(xylUInt32 id) {
	Known_thread& thread = known_threads_[thread_count_++];
	thread.id = id;
	thread.context = {};
	thread.stack_start = thread.stack_end = 0;
	return thread;
}

void os::Minidump_writer::collect_threads() {
	const size_t count = hold_other_threads();
	for (size_t i = 0; i < count; ++i) {
		const Held_thread held = held_thread(i);
		Known_thread& thread = next_thread(static_cast<xylUInt32>(held.id));
		if (held.context) {
			thread.context = context_of(*held.context);
		} else if (!read_waiting_place(thread.id, &thread.context)) {
			--thread_count_;
		}
	}
}

// --- Mappings, images

void os::Minidump_writer::write_mappings() {
	begin_stream();
	// Of the thread: the list of the process is empty once its first thread has ended.
	output_.append_file("/proc/thread-self/maps", most_map_text);
	const xylUInt32 start = stream_start_;
	const xylUInt32 size = output_.position() - start;
	end_stream(linux_maps_stream);
	// From our own copy, so that what is told about modules and what the text says agree.
	output_.flush();
	lines_.start(output_.file(), start, size);
	while (const char* line = lines_.next()) {
		Mapping mapping;
		if (!parse_mapping(line, &mapping)) continue;
		find_stacks(mapping);
		follow_image(mapping);
	}
	finish_image();
}

// The mappings come in rising order: the first one that the stack pointer lies in, or shortly below
// when the thread ran out of stack, is its own.
void os::Minidump_writer::find_stacks(const Mapping& mapping) {
	if (!mapping.readable) return;
	for (size_t i = 0; i < thread_count_; ++i) {
		Known_thread& thread = known_threads_[i];
		const xylUInt64 pointer = thread.context.rsp;
		if (thread.stack_end != 0 || pointer >= mapping.end) continue;
		if (pointer < mapping.start && mapping.start - pointer > overrun_reach) continue;
		thread.stack_start = std::max(mapping.start, pointer - std::min(pointer, red_zone));
		thread.stack_end = std::min(mapping.end, thread.stack_start + most_stack);
	}
}

// An image begins where its file does, and is loaded if one of its mappings can be executed: a file
// that somebody only reads is mapped as well.
void os::Minidump_writer::follow_image(const Mapping& mapping) {
	if (mapping.path[0] != '/' && mapping.path[0] != '[') return;
	const bool belongs = image_.base != 0 && mapping.start - image_.base < image_.elf.size &&
	                     std::strncmp(mapping.path, image_.path.data(), path_size - 1) == 0;
	if (!belongs) {
		finish_image();
		if (mapping.offset != 0 || !mapping.readable) return;
		if (!read_elf_image(mapping.start, &image_.elf)) return;
		image_.base = mapping.start;
		image_.executable = false;
		std::strncpy(image_.path.data(), mapping.path, path_size - 1);
	}
	image_.executable = image_.executable || mapping.executable;
}

void os::Minidump_writer::finish_image() {
	const bool is_module = image_.base != 0 && image_.executable && module_count_ < most_modules;
	if (is_module) {
		Module& module = modules_[module_count_];
		module = {};
		module.base = image_.base;
		module.size = static_cast<xylUInt32>(image_.elf.size);
		module.name_rva = append_text(image_.path.data());
		if (image_.elf.build_id_size > 0) {
			module.identity = append_record(&build_id_identity, sizeof(build_id_identity));
			output_.append(image_.elf.build_id, image_.elf.build_id_size);
			module.identity.size += image_.elf.build_id_size;
		}
		if (getauxval(AT_ENTRY) - image_.base < image_.elf.size) program_index_ = module_count_;
		++module_count_;
	}
	image_.base = 0;
}

// --- Threads, memory

void os::Minidump_writer::write_threads() {
	for (size_t i = 0; i < thread_count_; ++i) {
		const Known_thread& known = known_threads_[i];
		Thread& thread = threads_[i];
		thread = {};
		thread.id = known.id;
		output_.align(alignof(Context));
		thread.context = append_record(&known.context, sizeof(known.context));
		thread.stack.start = known.stack_start;
		thread.stack.data.rva = output_.position();
		thread.stack.data.size = output_.append_memory(
			known.stack_start, static_cast<xylUInt32>(known.stack_end - known.stack_start));
		add_range(thread.stack);
	}
}

void os::Minidump_writer::add_range(const Memory_range& range) {
	if (range.data.size > 0 && range_count_ < most_ranges) ranges_[range_count_++] = range;
}

// What the registers of the exception point at.
void os::Minidump_writer::write_surroundings() {
	const Context& at = known_threads_[0].context;
	for (const xylUInt64 address : {at.rip, at.rax, at.rcx, at.rdx, at.rbx, at.rbp, at.rsi, at.rdi,
	                                at.r8, at.r9, at.r10, at.r11, at.r12, at.r13, at.r14, at.r15}) {
		write_area(address);
	}
}

// No byte stands in the list of ranges twice: debuggers take any of them.
void os::Minidump_writer::write_area(xylUInt64 address) {
	xylUInt64 start = address - std::min(address, area_reach);
	xylUInt64 end = address + std::min(~address, area_reach);
	for (size_t i = 0; i < range_count_; ++i) {
		const xylUInt64 other = ranges_[i].start;
		const xylUInt64 other_end = other + ranges_[i].data.size;
		if (address >= other && address < other_end) return;
		if (other_end <= address) start = std::max(start, other_end);
		if (other > address) end = std::min(end, other);
	}
	Memory_range range{start, {0, output_.position()}};
	range.data.size = output_.append_memory(start, static_cast<xylUInt32>(end - start));
	if (range.data.size == 0) { // unreadable in front of the address, perhaps not at it
		range.start = address;
		range.data.size = output_.append_memory(address, static_cast<xylUInt32>(end - address));
	}
	add_range(range);
}

// --- Lists and small records

template <typename Record>
void os::Minidump_writer::write_list(Stream_type type, const Record* records, size_t count) {
	begin_stream();
	const auto count_in_file = static_cast<xylUInt32>(count);
	output_.append(&count_in_file, sizeof(count_in_file));
	output_.append(records, count * sizeof(Record));
	end_stream(type);
}

// Only what the kernel itself raises has an address with a meaning; a signal that somebody sent is
// shown at the instruction.
void os::Minidump_writer::write_exception() {
	Exception exception{};
	exception.thread_id = thread_id_;
	exception.code = static_cast<xylUInt32>(record_.si_signo);
	exception.flags = static_cast<xylUInt32>(record_.si_code);
	exception.address = record_.si_code > 0 ? reinterpret_cast<xylUInt64>(record_.si_addr)
	                                        : known_threads_[0].context.rip;
	exception.context = threads_[0].context;
	begin_stream();
	output_.append(&exception, sizeof(exception));
	end_stream(exception_stream);
}

void os::Minidump_writer::write_system_info() {
	System_info info{};
	info.architecture = amd64;
	info.platform = linux_platform;
	info.processor_count = static_cast<xylUInt8>(std::min<xylUInt32>(processor_count(), 255));
	const Cpuid_registers vendor = cpuid(0, 0);
	const Cpuid_registers model = cpuid(1, 0);
	info.vendor[0] = vendor.ebx;
	info.vendor[1] = vendor.edx;
	info.vendor[2] = vendor.ecx;
	info.version_leaf = model.eax;
	info.feature_leaf = model.edx;
	info.level = static_cast<xylUInt16>((model.eax >> 8 & 15) + (model.eax >> 20 & 255));
	info.revision = static_cast<xylUInt16>((model.eax >> 4 & 15) << 8 | (model.eax & 15));
	utsname name{};
	uname(&name);
	char* numbers = name.release; // "6.1.0-13-amd64"
	info.major_version = static_cast<xylUInt32>(std::strtoul(numbers, &numbers, 10));
	if (*numbers == '.') {
		info.minor_version = static_cast<xylUInt32>(std::strtoul(numbers + 1, &numbers, 10));
	}
	info.version_text_rva = append_text(name.version);
	begin_stream();
	output_.append(&info, sizeof(info));
	end_stream(system_info_stream);
}

void os::Minidump_writer::write_misc_info() {
	const Misc_info info{sizeof(info), has_process_id, process_id_, 0, 0, 0};
	begin_stream();
	output_.append(&info, sizeof(info));
	end_stream(misc_info_stream);
}

// The environment isn't among them: it is where secrets are kept.
void os::Minidump_writer::write_texts() {
	struct Text {
		Stream_type type;
		const char* path;
	};
	static constexpr Text texts[] = {
		{linux_cpu_info_stream, "/proc/cpuinfo"},
		{linux_process_status_stream, "/proc/self/status"},
		{linux_release_stream, "/etc/os-release"},
		{linux_command_line_stream, "/proc/thread-self/cmdline"},
		{linux_auxiliary_vector_stream, "/proc/thread-self/auxv"},
	};
	for (const Text& text : texts) {
		begin_stream();
		if (output_.append_file(text.path, most_text) > 0) end_stream(text.type);
	}
}

void os::Minidump_writer::write_directory() {
	output_.flush();
	const Header header{signature,
	                    version,
	                    static_cast<xylUInt32>(streams_.size()),
	                    sizeof(Header),
	                    0,
	                    static_cast<xylUInt32>(std::time(nullptr)),
	                    0};
	output_.write_at(sizeof(header), streams_.data(), sizeof(streams_));
	output_.write_at(0, &header, sizeof(header));
	output_.finish();
}

// --- The pieces

os::minidump::Location os::Minidump_writer::append_record(const void* record, size_t size) {
	const Location location{static_cast<xylUInt32>(size), output_.position()};
	output_.append(record, size);
	return location;
}

// A text as the format has it: bytes without the terminator, UTF-16, terminator. Where it stands.
xylUInt32 os::Minidump_writer::append_text(const char* text) {
	output_.align(4);
	const auto each_unit = [text](auto&& take) {
		for (const char* at = text; *at;) {
			xylUInt32 point = take_code_point(at);
			if (point >= 0x10000) {
				take(static_cast<xylUInt16>(0xD800 + ((point - 0x10000) >> 10 & 0x3FF)));
				point = 0xDC00 + (point & 0x3FF);
			}
			take(static_cast<xylUInt16>(point));
		}
	};
	xylUInt32 size = 0;
	each_unit([&](xylUInt16) { size += 2; });
	const xylUInt32 start = append_record(&size, sizeof(size)).rva;
	each_unit([&](xylUInt16 unit) { output_.append(&unit, sizeof(unit)); });
	output_.append("\0", 2);
	return start;
}

void os::Minidump_writer::begin_stream() {
	output_.align(8);
	stream_start_ = output_.position();
}

void os::Minidump_writer::end_stream(Stream_type type) {
	streams_[stream_count_++] = {type, {output_.position() - stream_start_, stream_start_}};
}
