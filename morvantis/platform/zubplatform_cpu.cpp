// The processor's own description.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/platform/system/processor.h>

#include <cstring>

namespace {

constexpr xylUInt32 first_extended_leaf = 0x80000000;
constexpr xylUInt32 first_brand_leaf = 0x80000002; // of three with 16 characters each

bool bit(xylUInt32 value, unsigned int number) { return value >> number & 1; }

} // namespace

xylCPU_description zubPlatform::get_cpu_description() {
	xylCPU_description result;
	// kept: the highest extended leaf gates every leaf, the basic ones as well, and each must lie
	// below it: with a limit of exactly 0x80000004 the last 16 characters of the name are missing.
	const xylUInt32 limit = os::cpuid(first_extended_leaf, 0).eax;
	if (limit > 1) {
		const xylUInt32 features = os::cpuid(1, 0).ecx;
		result.has_sse3 = bit(features, 0);
		result.has_ssse3 = bit(features, 9);
		result.has_sse4_1 = bit(features, 19);
		result.has_sse4_2 = bit(features, 20);
		result.has_avx = bit(features, 28);
	}
	if (limit > 7) result.has_avx2 = bit(os::cpuid(7, 0).ebx, 5);

	char brand[3 * 16 + 1]{}; // terminated even when a processor fills all three leaves
	for (xylUInt32 i = 0; i < 3; ++i) {
		if (limit <= first_brand_leaf + i) break;
		const os::Cpuid_registers text = os::cpuid(first_brand_leaf + i, 0);
		std::memcpy(brand + 16 * i, &text, 16);
	}
	result.brand_name = brand;
	result.processor_count = os::processor_count();
	return result;
}
