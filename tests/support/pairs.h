// Objects of the library beside their plain counterparts: conversions, comparison of all components
// by their bits, and draws of random ones.
#pragma once

#include <gtest/gtest.h>

#include <tessarn/cplx.h>
#include <tessarn/geometry.h>
#include <tessarn/poly.h>
#include <tessarn/vectors.h>

#include "plain/cplx.h"
#include "plain/geometry.h"
#include "plain/poly.h"
#include "plain/surface.h"
#include "plain/vectors.h"
#include "support/bits.h"
#include "support/random.h"

namespace test {

// ---------------------------------------------------------------------------- draws

// Mostly ordinary numbers, often small integers (which make exact zeros and ties), some hostile.
inline double draw(random_source& r) {
  switch (r.below(8)) {
    case 0:
    case 1: return static_cast<double>(r.below(7)) - 3.0;
    case 2: return r.hostile();
    case 3: return r.hostile_finite();
    default: return r.uniform(-10.0, 10.0);
  }
}

inline double draw_finite(random_source& r) {
  return r.below(3) == 0 ? static_cast<double>(r.below(7)) - 3.0 : r.uniform(-10.0, 10.0);
}

inline plain::cplx draw_cplx(random_source& r) { return {draw(r), draw(r)}; }
inline plain::vec2 draw_vec2(random_source& r) { return {draw(r), draw(r)}; }
inline plain::vec3 draw_vec3(random_source& r) { return {draw(r), draw(r), draw(r)}; }
inline plain::polar draw_polar(random_source& r) { return {draw(r), draw(r), draw(r)}; }
inline plain::vec3 draw_finite_vec3(random_source& r) { return {draw_finite(r), draw_finite(r), draw_finite(r)}; }

// ---------------------------------------------------------------------------- to the library

inline ::cplx lib(const plain::cplx& a) { return ::cplx(a.re, a.im); }
inline ::vector lib(const plain::vec2& a) { return ::vector(a.x, a.y); }
inline ::vector3d lib(const plain::vec3& a) { return ::vector3d(a.x, a.y, a.z); }
inline ::polarvector3d lib(const plain::polar& a) { return ::polarvector3d(a.alpha, a.beta, a.len); }
inline ::line3d lib(const plain::line& a) {
  ::line3d l;
  l.start = lib(a.start);
  l.end = lib(a.end);
  return l;
}
inline ::plane lib(const plain::plane& a) {
  ::plane p;
  p.origin = lib(a.origin);
  p.normal = lib(a.normal);
  p.axis1 = lib(a.axis1);
  p.axis2 = lib(a.axis2);
  return p;
}
inline void fill(::binom& b, const plain::poly& p) {
  b.create(static_cast<tessarn::slong>(p.count()));
  for (long i = 0; i < p.count(); ++i) b.set(static_cast<tessarn::slong>(i), p.get(i));
}
inline void fill(::hyperbinom& b, const plain::surface& p) {
  b.create(static_cast<tessarn::slong>(p.grade));
  for (long i = 0; i < p.grade; ++i) {
    for (long j = 0; j < p.grade; ++j) {
      b.set(static_cast<tessarn::slong>(i), static_cast<tessarn::slong>(j), p.get(i, j));
    }
  }
}

// ---------------------------------------------------------------------------- comparison

inline ::testing::AssertionResult differ(const char* what, double a, double b) {
  return ::testing::AssertionFailure() << what << ": " << hex(a) << " from the library, " << hex(b) << " plainly";
}

#define TEST_SAME_FIELD(field) \
  if (!same_bits(a.field, b.field)) return differ(#field, a.field, b.field)

inline ::testing::AssertionResult same(const ::cplx& a, const plain::cplx& b) {
  TEST_SAME_FIELD(re);
  TEST_SAME_FIELD(im);
  return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult same(const ::vector& a, const plain::vec2& b) {
  TEST_SAME_FIELD(x);
  TEST_SAME_FIELD(y);
  return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult same(const ::vector3d& a, const plain::vec3& b) {
  TEST_SAME_FIELD(x);
  TEST_SAME_FIELD(y);
  TEST_SAME_FIELD(z);
  return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult same(const ::polarvector3d& a, const plain::polar& b) {
  TEST_SAME_FIELD(alpha);
  TEST_SAME_FIELD(beta);
  TEST_SAME_FIELD(len);
  return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult same(const ::line3d& a, const plain::line& b) {
  if (auto r = same(a.start, b.start); !r) return r << " (start)";
  if (auto r = same(a.end, b.end); !r) return r << " (end)";
  return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult same(const ::plane& a, const plain::plane& b) {
  if (auto r = same(a.origin, b.origin); !r) return r << " (origin)";
  if (auto r = same(a.normal, b.normal); !r) return r << " (normal)";
  if (auto r = same(a.axis1, b.axis1); !r) return r << " (axis1)";
  if (auto r = same(a.axis2, b.axis2); !r) return r << " (axis2)";
  return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult same(::binom& a, const plain::poly& b) {
  if (static_cast<long>(a.getcofcnt()) != b.count()) {
    return ::testing::AssertionFailure() << "count " << a.getcofcnt() << " from the library, " << b.count()
                                         << " plainly";
  }
  for (long i = 0; i < b.count(); ++i) {
    const double v = a.get(static_cast<tessarn::slong>(i));
    if (!same_bits(v, b.get(i))) return differ("coefficient", v, b.get(i)) << " at " << i;
  }
  return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult same(::hyperbinom& a, const plain::surface& b) {
  if (static_cast<tessarn::slong>(a.getgrade()) != b.grade) {
    return ::testing::AssertionFailure() << "grade " << a.getgrade() << " from the library, " << b.grade << " plainly";
  }
  for (long j = 0; j < b.grade; ++j) {
    for (long i = 0; i < b.grade; ++i) {
      const double v = a.get(static_cast<tessarn::slong>(i), static_cast<tessarn::slong>(j));
      if (!same_bits(v, b.get(i, j))) {
        return differ("coefficient", v, b.get(i, j)) << " at (" << i << ", " << j << ")";
      }
    }
  }
  return ::testing::AssertionSuccess();
}
#undef TEST_SAME_FIELD

}  // namespace test
