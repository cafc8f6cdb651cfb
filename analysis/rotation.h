// The rotation that carries one set of vectors onto another best, from the sums of their products.
#pragma once

#include "analysis/doubled.h"

namespace tessarn::analysis {

// A rotation in doubled precision, or a rotation times -1 (in the plane: a rotation of the mirror image).
template <int D>
struct best_rotation {
  doubled entries[D][D];  // [row][column]
  doubled product;        // the sum of (R a) . b, the largest that can be reached
  doubled gap;            // of space s2 + s3, the singular values with the sign of det H; of the plane the product
  doubled wide_gap;       // of space s1 + s3: what holds turns that move the points most; of the plane the product
  bool reflected = false;
};

// H[r][c] is the sum of b_r a_c. Sums are off by at most `tolerance`: what lies within it counts as equal. A mirror
// image is taken where it is allowed and reaches a larger product.
best_rotation<3> rotation_of(const doubled (&h)[3][3], double tolerance, bool reflections) noexcept;
best_rotation<2> rotation_of(const doubled (&h)[2][2], double tolerance, bool reflections) noexcept;

}  // namespace tessarn::analysis
