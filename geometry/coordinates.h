// The coordinates of a point as the kernels take them.
#pragma once

#include <array>

#include "tessarn/vectors.h"

namespace tessarn::detail {

inline std::array<double, 3> coordinates_of(const vector3d& p) {
  return {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
}

}  // namespace tessarn::detail
