// The records of a minidump file, as the debuggers of every system read it. All numbers are
// little-endian, positions ("rva") count from the start of the file.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os::minidump {

#pragma pack(push, 4) // as in the file

constexpr xylUInt32 signature = 0x504D444D; // "MDMP"
constexpr xylUInt32 version = 0xA793;

enum Stream_type : xylUInt32 {
	thread_list_stream = 3,
	module_list_stream = 4,
	memory_list_stream = 5,
	exception_stream = 6,
	system_info_stream = 7,
	misc_info_stream = 15,
	// Texts of the kernel as they are.
	linux_cpu_info_stream = 0x47670003,
	linux_process_status_stream = 0x47670004,
	linux_release_stream = 0x47670005,
	linux_command_line_stream = 0x47670006,
	linux_auxiliary_vector_stream = 0x47670008,
	linux_maps_stream = 0x47670009,
};

struct Header {
	xylUInt32 signature;
	xylUInt32 version;
	xylUInt32 stream_count;
	xylUInt32 directory_rva;
	xylUInt32 checksum;
	xylUInt32 unix_time;
	xylUInt64 flags;
};
static_assert(sizeof(Header) == 32);

struct Location {
	xylUInt32 size;
	xylUInt32 rva;
};

struct Directory_entry {
	xylUInt32 type; // 0: unused
	Location data;
};
static_assert(sizeof(Directory_entry) == 12);

struct Memory_range {
	xylUInt64 start;
	Location data;
};
static_assert(sizeof(Memory_range) == 16);

// The registers of a thread.
struct alignas(16) Context {
	xylUInt64 homes[6];
	xylUInt32 flags;
	xylUInt32 mxcsr;
	xylUInt16 cs, ds, es, fs, gs, ss;
	xylUInt32 eflags;
	xylUInt64 debug_registers[6];
	xylUInt64 rax, rcx, rdx, rbx, rsp, rbp, rsi, rdi, r8, r9, r10, r11, r12, r13, r14, r15, rip;
	xylUInt8 floating_point[512]; // as FXSAVE writes it
	xylUInt8 vector_registers[464];
};
static_assert(sizeof(Context) == 1232);
constexpr xylUInt32 full_context = 0x10000F; // control, integer, segments, floating point

struct Thread {
	xylUInt32 id;
	xylUInt32 suspend_count;
	xylUInt32 priority_class;
	xylUInt32 priority;
	xylUInt64 environment_block;
	Memory_range stack;
	Location context;
};
static_assert(sizeof(Thread) == 48);

struct Module {
	xylUInt64 base;
	xylUInt32 size;
	xylUInt32 checksum;
	xylUInt32 time_stamp;
	xylUInt32 name_rva;
	xylUInt32 version_info[13];
	Location identity;
	Location misc;
	xylUInt64 reserved[2];
};
static_assert(sizeof(Module) == 108);

constexpr xylUInt32 build_id_identity = 0x4270454C; // the build id follows as it is

struct Exception {
	xylUInt32 thread_id;
	xylUInt32 alignment;
	xylUInt32 code;  // number of the signal
	xylUInt32 flags; // its si_code
	xylUInt64 next_record;
	xylUInt64 address;
	xylUInt32 parameter_count;
	xylUInt32 more_alignment;
	xylUInt64 parameters[15];
	Location context;
};
static_assert(sizeof(Exception) == 168);

struct System_info {
	xylUInt16 architecture;
	xylUInt16 level; // family of the processor
	xylUInt16 revision;
	xylUInt8 processor_count;
	xylUInt8 product_type;
	xylUInt32 major_version;
	xylUInt32 minor_version;
	xylUInt32 build_number;
	xylUInt32 platform;
	xylUInt32 version_text_rva;
	xylUInt16 suite_mask;
	xylUInt16 reserved;
	xylUInt32 vendor[3];
	xylUInt32 version_leaf; // CPUID 1: EAX
	xylUInt32 feature_leaf; // CPUID 1: EDX
	xylUInt32 extended_features;
};
static_assert(sizeof(System_info) == 56);
constexpr xylUInt16 amd64 = 9;
constexpr xylUInt32 linux_platform = 0x8201;

struct Misc_info {
	xylUInt32 size;
	xylUInt32 flags;
	xylUInt32 process_id;
	xylUInt32 create_time;
	xylUInt32 user_time;
	xylUInt32 kernel_time;
};
static_assert(sizeof(Misc_info) == 24);
constexpr xylUInt32 has_process_id = 1;

#pragma pack(pop)

} // namespace os::minidump
