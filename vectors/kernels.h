// The kernels of the point list, one table for each instruction set.
#pragma once

#include <stddef.h>

namespace tessarn::detail {

// A point's neighbourhood in a moving mean: this many points on either side.
inline constexpr size_t neighbours = 5;

struct list_kernels {
  // squared[i] = (y[i] - m)^2 for n points, m the mean of y[i - neighbours] .. y[i + neighbours], summed afresh in
  // ascending order from +0.0 and divided by their number.
  void (*squared_deviations)(const double* y, double* squared, size_t n);

  // The ordinates of n plane points, each three doubles of which x and y are the last two.
  void (*ordinates)(const double* points, size_t n, double* y);
};

namespace baseline {
extern const list_kernels list_table;
}
namespace avx2 {
extern const list_kernels list_table;
}
namespace avx512 {
extern const list_kernels list_table;
}

// The table of the instruction set in use.
const list_kernels& list() noexcept;

}  // namespace tessarn::detail
