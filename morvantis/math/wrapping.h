// Integer arithmetic that is defined for every pair of numbers.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt32, xylInt64

// The low 32 bits of the exact result: sums and products wrap around.
namespace xyl_wrapping {

inline int low_bits(xylInt64 exact) { return static_cast<int>(exact); }
inline int sum(int a, int b) { return low_bits(static_cast<xylInt64>(a) + b); }
inline int difference(int a, int b) { return low_bits(static_cast<xylInt64>(a) - b); }
inline int product(int a, int b) { return low_bits(static_cast<xylInt64>(a) * b); }
// Towards zero; 0 for a divisor of 0, which the processor would answer with a trap.
inline int quotient(int a, int b) { return b == 0 ? 0 : low_bits(static_cast<xylInt64>(a) / b); }

} // namespace xyl_wrapping
