// Sorting of points by x, then by y.
#pragma once

#include <morvantis/math/xylvec2.h>

#include <cstddef>

// Sorts in place by x, then by y, keeping every bit of every point; 0 and -0 are the same number,
// and which of two equal points comes first is not told. Not-a-numbers count as lower or higher
// than all numbers, by their sign. Takes memory from the heap for the time of the call where there
// are more than a few points.
void sort_points(xylVec2* points, std::size_t count);
