// A vector as the peers of the geometry's benchmarks have it.
#pragma once

#include "plain.h"

#include <morvantis/math/xylvec3.h>

#include <glm/glm.hpp>

inline plain::Vec<float> to_plain(const xylVec3& v) { return {v.x, v.y, v.z}; }
inline glm::vec3 to_glm(const xylVec3& v) { return {v.x, v.y, v.z}; }
