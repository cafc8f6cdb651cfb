// Numbers of 640 bits, as judge where roots are taken and exact rationals do not reach.
#pragma once

#if defined(TESTS_HAVE_GMP)

#include <gmpxx.h>

#include <cmath>

namespace test {

using wide_base = mpf_class;

// A number whose constructors all have the same precision.
struct wide : wide_base {
  static constexpr int bits = 640;
  wide() : wide_base(0, bits) {}
  wide(double v) : wide_base(v, bits) {}
  wide(const mpf_class& v) : wide_base(v, bits) {}
  template <class T, class U>
  wide(const __gmp_expr<T, U>& e) : wide_base(e, bits) {}
};

inline wide square_root(const wide& v) { return wide(sqrt(v)); }
inline wide magnitude(const wide& v) { return wide(abs(v)); }

// Whether |exact - value| <= error.
inline bool near(const wide& exact, double value, const wide& error) {
  return std::isfinite(value) && magnitude(wide(exact - wide(value))) <= error;
}

struct wide3 {
  wide v[3];
  wide& operator[](int k) { return v[k]; }
  const wide& operator[](int k) const { return v[k]; }
};

inline wide dot(const wide3& a, const wide3& b) { return wide(a[0] * b[0] + a[1] * b[1] + a[2] * b[2]); }
inline wide3 cross(const wide3& a, const wide3& b) {
  return {{wide(a[1] * b[2] - a[2] * b[1]), wide(a[2] * b[0] - a[0] * b[2]), wide(a[0] * b[1] - a[1] * b[0])}};
}
inline wide3 operator-(const wide3& a, const wide3& b) {
  return {{wide(a[0] - b[0]), wide(a[1] - b[1]), wide(a[2] - b[2])}};
}
inline wide length(const wide3& a) { return square_root(dot(a, a)); }

}  // namespace test

#endif
