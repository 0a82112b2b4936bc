// Pairs, and the moves and swaps of the standard library under EASTL's names.
#pragma once

#include <EASTL/internal/config.h>

#include <utility>

namespace eastl {

using std::forward;
using std::make_pair;
using std::move;
using std::pair;
using std::swap;

} // namespace eastl
