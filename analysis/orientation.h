// Cross products and determinants of differences of points, with signs that are exact.
#pragma once

#include "analysis/doubled.h"

namespace tessarn::analysis {

// A point whose coordinates are 0 or of a magnitude between 2^-270 and 2, so that the products of three differences
// neither overflow nor lose an error term.
struct lattice_point {
  double c[3];
};

// The exact difference of two points.
struct difference {
  doubled c[3];

  difference() = default;
  difference(const lattice_point& to, const lattice_point& from) noexcept {
    for (int k = 0; k < 3; ++k) c[k] = exact_sum(to.c[k], -from.c[k]);
  }
};

// A vector in doubled precision; each coordinate of those below is right within 2^-100 of itself.
struct direction {
  doubled c[3];
};

// Whether u x v is not zero; exact.
bool independent(const difference& u, const difference& v) noexcept;

// The sign of the determinant u x v . w; exact. It is decided in double precision where the bound of the error allows,
// then in doubled precision, and last by exact arithmetic (J. Shewchuk, 1997).
int sign_of_determinant(const difference& u, const difference& v, const difference& w) noexcept;

// The determinant in double precision with a bound of its error.
struct estimate {
  double value, error;
};
estimate estimated_determinant(const difference& u, const difference& v, const difference& w) noexcept;

// u x v . w within 2^-56 of itself; its sign is exact. Cheaper than the next where it is not close to 0.
doubled determinant_for_comparison(const difference& u, const difference& v, const difference& w) noexcept;

// u x v . w and u x v, from exact arithmetic: each number within 2^-100 of itself.
doubled rounded_determinant(const difference& u, const difference& v, const difference& w) noexcept;
direction rounded_cross_product(const difference& u, const difference& v) noexcept;

}  // namespace tessarn::analysis
