// The sum of the squared residuals as a polynomial of second degree around a normal, with a bound on what it leaves
// out. Most steps of the search for a normal are decided by it, in a few operations; the others fall to the bounds.
#pragma once

#include "geometry/kernels/kernels.h"

namespace tessarn::detail {

// In units of the trace of the second moments, with u = 2^-53. For a unit normal (x, y, z), z > 0, the sum is
//   F(x, y) = xx x^2 + yy y^2 + zz (1 - x^2 - y^2) + 2 xy x y + z B, B = 2 (xz x + yz y).
// - Only z B has a third derivative. Along a line z is the ordinate of a circle of radius 1 or less, so that its
//   second and third derivatives are at most 1 / z^3 and 3 r / z^5, r^2 = 1 - z^2; with |B| <= 2 s r and |B'| <= 2 s,
//   s the length of (xz, yz), that derivative is at most 6 s / z^5. Within z^2 / 32 of the base, z^5 falls by less
//   than a sixth.
// - The moments are off by 80 u: with n the normal and E their error, n E n differs by 2 |E| |n - n'| between two
//   cells, less than 1900 u steps. The derivatives' and the polynomial's own roundings come to less than 1500 u
//   steps.
// - The coordinates and z of a cell are off by u and, from z = 0.3 up, 10 u; since |S n|^2 <= F for the moments S, F
//   changes by less than 30 u sqrt(F).
// - The computed sum is off from F by what the bounds allow (bounds.h), where 2 a b <= 2^-44 a^2 + 2^44 b^2 replaces
//   the root.
class residual_model {
 public:
  // undecided: the model says nothing.
  static constexpr int undecided = -1;

  residual_model(const residual_form& form, bool usable);
  // Of the nine cells around (x, y), row by row, the one whose computed sum is below all others and above 0.
  int best(double x, double y, double step) {
    if (!usable_) return undecided;
    const int cell = decide(x, y, step);
    return cell == undecided && expand(x, y) ? decide(x, y, step) : cell;
  }

 private:
  bool expand(double x, double y);
  int decide(double x, double y, double step) const;

  bool usable_;
  double xx_, yy_, zz_, xy_, xz_, yz_;
  double cross_;           // the length of (xz, yz)
  double error_, factor_;  // a computed sum is off by at most error + factor F from that of the rounded normal
  // The base, the derivatives there, a bound on the third one, and how far from the base they hold.
  double x_ = 0, y_ = 0;
  double slope_x_ = 0, slope_y_ = 0;
  double curve_xx_ = 0, curve_yy_ = 0, curve_xy_ = 0;
  double third_ = 0;
  double reach_ = -1;
  double margin_ = 0;  // by which the computed sums of two cells, less F, may differ
};

}  // namespace tessarn::detail
