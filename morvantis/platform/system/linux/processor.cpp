#include <morvantis/platform/system/processor.h>

#include <cpuid.h>
#include <unistd.h>

os::Cpuid_registers os::cpuid(xylUInt32 leaf, xylUInt32 subleaf) {
	Cpuid_registers answer{};
	__cpuid_count(leaf, subleaf, answer.eax, answer.ebx, answer.ecx, answer.edx);
	return answer;
}

xylUInt32 os::processor_count() {
	const long count = sysconf(_SC_NPROCESSORS_ONLN);
	return count < 1 ? 1 : static_cast<xylUInt32>(count);
}
