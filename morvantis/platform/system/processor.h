// What the processor says about itself.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// Any thread may call these; neither allocates.

struct Cpuid_registers {
	xylUInt32 eax, ebx, ecx, edx;
};

// One leaf of the processor's own description, by its CPUID instruction with `leaf` in EAX and
// `subleaf` in ECX.
Cpuid_registers cpuid(xylUInt32 leaf, xylUInt32 subleaf);

// Logical processors of the machine that are in use, at least 1.
xylUInt32 processor_count();

} // namespace os
