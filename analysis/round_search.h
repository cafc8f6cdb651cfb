// The search for the circle, sphere or cylinder with the least sum of squared distances.
#pragma once

#include "analysis/round_shape.h"

namespace tessarn::analysis {

// The sum of w^2 r^2 over the points, and what a step needs of it. The sums are those of the kernels.
template <class T>
struct round_sums {
  T squares;
  T gradient[most_unknowns];
  T normal[most_entries];   // the products of first derivatives
  T hessian[most_entries];  // with the second derivatives of the distances besides

  round_sums(const shape_data& data, const round_shape<T>& m, const tangents<T>& t) noexcept;
};

// The shape and its directions as the kernels take them.
detail::round_numbers kernel_numbers(const round_shape<double>& m) noexcept;  // without directions
detail::round_numbers kernel_numbers(const round_shape<doubled>& m, const tangents<doubled>& t) noexcept;

// Where a search ended.
template <class T>
struct round_result {
  round_shape<T> shape;
  double squares = 0;
  bool converged = false;  // the gradient is at the level of rounding
  bool determined =
      true;  // where last tried without damping, the second derivatives were positive along all directions
  ulong steps = 0;
  // The products of first derivatives at the last shape that was looked at, and the directions there: those of the
  // result as far as a convergent step lets them.
  T normal[most_entries] = {};
  tangents<T> at;
};

// From a shape downwards, in double precision, until most of the digits are reached.
round_result<double> search(const shape_data& data, const round_shape<double>& start, ulong most_steps) noexcept;
// From such a result on, in doubled precision.
round_result<doubled> refine(const shape_data& data, const round_result<double>& found, ulong most_steps) noexcept;

// The sum that partial sums in double precision make up: in the order of a tree.
inline double partial_sum(const double* p) noexcept {
  return ((p[0] + p[1]) + (p[2] + p[3])) + ((p[4] + p[5]) + (p[6] + p[7]));
}

// The sum of w^2 r^2 alone.
double squares_of(const shape_data& data, const round_shape<double>& m) noexcept;

}  // namespace tessarn::analysis
