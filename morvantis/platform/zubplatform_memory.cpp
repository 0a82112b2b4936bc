// Memory figures and page memory.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/core/not_implemented.h>
#include <morvantis/memory/page_size.h>
#include <morvantis/platform/system/memory.h>

namespace {

// An unsigned number as double, by way of the signed conversion. kept: above 2^63 this rounds
// twice.
double widen(xylUInt64 value) {
	static constexpr double two_to_64 = 18446744073709551616.0;
	const double signed_value = static_cast<double>(static_cast<xylInt64>(value));
	return signed_value < 0 ? signed_value + two_to_64 : signed_value;
}

// The file of the texts for log tools.
constexpr char not_implemented_file[] = "zubplatform";

} // namespace

xylUInt64 zubPlatform::get_application_memory() {
	os::Process_memory usage{};
	return os::process_memory(&usage) ? usage.resident_bytes : 0;
}

xylUInt64 zubPlatform::get_application_commit_memory() {
	os::Process_memory usage{};
	return os::process_memory(&usage) ? usage.committed_bytes : 0;
}

float zubPlatform::get_available_memory_percentage() {
	os::Memory_status status{};
	if (!os::physical_memory(&status)) return -1.0f;
	return static_cast<float>(widen(status.available_bytes) / widen(status.total_bytes)) * 100.0f;
}

xylUInt64 zubPlatform::page_size_internal() { return ask_page_size(); }

xylUInt64 zubPlatform::page_size() { return known_page_size(); }

void* zubPlatform::allocate_memory(xylUInt64 size, xylUInt64, bool, bool) {
	return os::take_pages(size);
}

xylUInt64 zubPlatform::allocation_size(void* p) { return os::region_size(p); }

bool zubPlatform::deallocate_memory(void* p, xylUInt64) { return os::release_pages(p); }

bool zubPlatform::decommit_memory(void* p, xylUInt64 size, xylUInt64) {
	return os::decommit_pages(p, size);
}

// The line numbers below are part of the texts, and log tools know them.

void* zubPlatform::allocate_direct_memory(xylUInt64, xylUInt64, bool, bool) {
	static constinit std::atomic<bool> said = false;
	say_not_implemented(said, "zubPlatform::allocate_direct_memory", not_implemented_file, 780);
	return nullptr;
}

bool zubPlatform::deallocate_direct_memory(void*) {
	static constinit std::atomic<bool> said = false;
	say_not_implemented(said, "zubPlatform::deallocate_direct_memory", not_implemented_file, 871);
	return false;
}
