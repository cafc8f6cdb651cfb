// The kernels of the point list, one table for each instruction set.
#pragma once

#include <stddef.h>

#include "simd/sets.h"

namespace tessarn::detail {

// A point's neighbourhood in a moving mean: this many points on either side.
inline constexpr size_t neighbours = 5;

// The abscissa of a point that is marked for removal.
inline constexpr double removed = -1;

struct list_kernels {
  // marked[i] = point i deviates or was marked before, for n plane points, each three doubles of which x and y are the
  // last two: (y - m)^2 > limit, m the mean of the ordinates from point i - neighbours to point i + neighbours, summed
  // afresh in ascending order from +0.0 and divided by their number; or x == removed. The points before the first and
  // after the last must be there. Gives the number of marks.
  size_t (*mark)(const double* points, size_t n, double limit, bool* marked);
};

#define TESSARN_TABLE(set)              \
  namespace set {                       \
  extern const list_kernels list_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const list_kernels& list_kernels_in_use() noexcept;

}  // namespace tessarn::detail
