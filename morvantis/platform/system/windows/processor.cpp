#include <morvantis/platform/system/processor.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <intrin.h>

#include <cstring>

os::Cpuid_registers os::cpuid(xylUInt32 leaf, xylUInt32 subleaf) {
	int registers[4];
	__cpuidex(registers, static_cast<int>(leaf), static_cast<int>(subleaf));
	Cpuid_registers answer;
	static_assert(sizeof(answer) == sizeof(registers));
	std::memcpy(&answer, registers, sizeof(answer));
	return answer;
}

xylUInt32 os::processor_count() {
	SYSTEM_INFO info{};
	GetSystemInfo(&info);
	return info.dwNumberOfProcessors;
}
