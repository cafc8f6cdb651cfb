#include "analysis/orientation.h"

#include "analysis/expansion.h"

namespace tessarn::analysis {

namespace {

using minor = expansion<16>;
using determinant = expansion<192>;

// Coordinate k of u x v.
minor exact_minor(const difference& u, const difference& v, int k) noexcept {
  const int i = (k + 1) % 3, j = (k + 2) % 3;
  return exact(u.c[i]) * exact(v.c[j]) + -(exact(u.c[j]) * exact(v.c[i]));
}

determinant exact_determinant(const difference& u, const difference& v, const difference& w) noexcept {
  return (exact_minor(u, v, 0) * exact(w.c[0]) + exact_minor(u, v, 1) * exact(w.c[1])) +
         exact_minor(u, v, 2) * exact(w.c[2]);
}

doubled doubled_determinant(const difference& u, const difference& v, const difference& w) noexcept {
  doubled sum = 0.0;
  for (int k = 0; k < 3; ++k) {
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    sum += (u.c[i] * v.c[j] - u.c[j] * v.c[i]) * w.c[k];
  }
  return sum;
}

// The sum of the magnitudes of the six products.
double permanent(const difference& u, const difference& v, const difference& w) noexcept {
  double sum = 0;
  for (int k = 0; k < 3; ++k) {
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    sum += (magnitude(u.c[i].high * v.c[j].high) + magnitude(u.c[j].high * v.c[i].high)) * magnitude(w.c[k]);
  }
  return sum;
}

// Whether w is u, -u or 0: a corner of the plane of u and v is often asked whether it lies there.
bool multiple(const difference& w, const difference& u) noexcept {
  bool zero = true, equal = true, opposite = true;
  for (int k = 0; k < 3; ++k) {
    const doubled a = w.c[k], b = u.c[k];
    zero = zero && a.high == 0;
    equal = equal && a.high == b.high && a.low == b.low;
    opposite = opposite && a.high == -b.high && a.low == -b.low;
  }
  return zero || equal || opposite;
}

// Sixteen operations of at most 15 * 2^-106 each, of the permanent, with room to spare.
constexpr double doubled_error = 0x1p-97;

}  // namespace

bool independent(const difference& u, const difference& v) noexcept {
  for (int k = 0; k < 3; ++k) {
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    const double a = u.c[i].high * v.c[j].high, b = u.c[j].high * v.c[i].high;
    // Three roundings in each product, and that of the difference; J. Shewchuk, 1997, figure 21.
    if (magnitude(a - b) > 0x1.01p-51 * (magnitude(a) + magnitude(b))) return true;
  }
  for (int k = 0; k < 3; ++k)
    if (exact_minor(u, v, k).sign() != 0) return true;
  return false;
}

// At most eight roundings lie between the coordinates and each of the six products in the sum, by 2^-53 each; the bound
// takes twelve. (J. Shewchuk, 1997, has seven for another order of the operations.)
estimate estimated_determinant(const difference& u, const difference& v, const difference& w) noexcept {
  double sum = 0;
  for (int k = 0; k < 3; ++k) {
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    sum += (u.c[i].high * v.c[j].high - u.c[j].high * v.c[i].high) * w.c[k].high;
  }
  return {sum, 0x1.8p-50 * permanent(u, v, w)};
}

int sign_of_determinant(const difference& u, const difference& v, const difference& w) noexcept {
  const estimate e = estimated_determinant(u, v, w);
  if (magnitude(e.value) > e.error) return e.value > 0 ? 1 : -1;
  if (multiple(w, u) || multiple(w, v)) return 0;
  const doubled d = doubled_determinant(u, v, w);
  if (magnitude(d) > doubled_error * permanent(u, v, w)) return d.high > 0 ? 1 : -1;
  return exact_determinant(u, v, w).sign();
}

doubled determinant_for_comparison(const difference& u, const difference& v, const difference& w) noexcept {
  const doubled d = doubled_determinant(u, v, w);
  if (magnitude(d) > 0x1p57 * doubled_error * permanent(u, v, w)) return d;
  return rounded_determinant(u, v, w);
}

doubled rounded_determinant(const difference& u, const difference& v, const difference& w) noexcept {
  return exact_determinant(u, v, w).rounded();
}

direction rounded_cross_product(const difference& u, const difference& v) noexcept {
  direction n;
  for (int k = 0; k < 3; ++k) n.c[k] = exact_minor(u, v, k).rounded();
  return n;
}

}  // namespace tessarn::analysis
