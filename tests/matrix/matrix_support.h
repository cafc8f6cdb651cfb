// What the matrix tests share: conversion between the library's matrices and the plain ones, kinds
// of random entries, and comparison of whole matrices by their bits.
#pragma once

#include <gtest/gtest.h>
#include <tessarn/cplx.h>
#include <tessarn/matrix.h>

#include <cstddef>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include "../support/bits.h"
#include "../support/random.h"
#include "plain/matrix.h"
#include "simd/isa.h"
#include "support/instruction_set.h"

namespace test {

using real_matrix = mat<long double>;
using complex_matrix = mat<cplx>;
using real_square = sqmat<long double>;
using complex_square = sqmat<cplx>;
using plain::u32;

inline constexpr double inf = std::numeric_limits<double>::infinity();
inline constexpr double quiet_nan = std::numeric_limits<double>::quiet_NaN();
inline double signalling_nan() { return from_bits(0x7FF0000000000123u); }

inline tessarn::ulong ul(std::size_t n) { return static_cast<tessarn::ulong>(n); }

// ---------------------------------------------------------------- literal matrices, row by row

inline real_matrix rows(u32 width, u32 height, std::initializer_list<double> values) {
  real_matrix m;
  m.create(width, height);
  std::size_t i = 0;
  for (double v : values) m.getData()[i++] = v;
  return m;
}

inline real_matrix column(std::initializer_list<double> values) {
  return rows(1, static_cast<u32>(values.size()), values);
}

inline real_square square(u32 n, std::initializer_list<double> values) {
  real_square m;
  m.create(n);
  std::size_t i = 0;
  for (double v : values) m.getData()[i++] = v;
  return m;
}

inline complex_square complex_rows(u32 n, std::initializer_list<plain::cnum> values) {
  complex_square m;
  m.create(n);
  u32 i = 0;
  for (plain::cnum v : values) {
    m.set(i % n, i / n, cplx(v.re, v.im));
    ++i;
  }
  return m;
}

inline complex_matrix complex_column(std::initializer_list<plain::cnum> values) {
  complex_matrix m;
  m.create(1, ul(values.size()));
  u32 i = 0;
  for (plain::cnum v : values) m.set(0, i++, cplx(v.re, v.im));
  return m;
}

// ---------------------------------------------------------------- conversion, entries unchanged

inline real_matrix to_library(const plain::matrix& p) {
  real_matrix m;
  m.create(p.width, p.height);
  for (std::size_t i = 0; i < p.data.size(); ++i) m.getData()[i] = p.data[i];
  return m;
}

inline real_square to_library(const plain::square& p) {
  real_square m;
  m.create(p.size);
  for (std::size_t i = 0; i < p.data.size(); ++i) m.getData()[i] = p.data[i];
  return m;
}

inline complex_matrix to_library(const plain::cmatrix& p) {
  complex_matrix m;
  m.create(p.width, p.height);
  for (u32 y = 0; y < p.height; ++y) {
    for (u32 x = 0; x < p.width; ++x) m.set(x, y, cplx(p.get(x, y).re, p.get(x, y).im));
  }
  return m;
}

inline complex_square to_library(const plain::csquare& p) {
  complex_square m;
  m.create(p.size);
  for (u32 y = 0; y < p.size; ++y) {
    for (u32 x = 0; x < p.size; ++x) m.set(x, y, cplx(p.get(x, y).re, p.get(x, y).im));
  }
  return m;
}

inline plain::matrix to_plain(const real_matrix& m) {
  plain::matrix p(static_cast<u32>(m.getWidth()), static_cast<u32>(m.getHeight()));
  for (std::size_t i = 0; i < p.data.size(); ++i) p.data[i] = m.getData()[i];
  return p;
}

// ---------------------------------------------------------------- comparison by bits

inline std::string place(std::size_t i, u32 width) {
  if (width == 0) return "nowhere";
  return "row " + std::to_string(i / width) + ", column " + std::to_string(i % width);
}

// Of doubles, or of the library's reals.
template <class Real>
::testing::AssertionResult same_entries(const Real* got, const std::vector<double>& want, u32 width) {
  for (std::size_t i = 0; i < want.size(); ++i) {
    if (!same_bits(got[i], want[i])) {
      return ::testing::AssertionFailure() << place(i, width) << ": got " << hex(got[i]) << ", want " << hex(want[i]);
    }
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult same(const real_matrix& got, const plain::matrix& want) {
  if (got.getWidth() != want.width || got.getHeight() != want.height) {
    return ::testing::AssertionFailure() << "sizes: got " << got.getWidth() << " x " << got.getHeight() << ", want "
                                         << want.width << " x " << want.height;
  }
  return same_entries(got.getData(), want.data, want.width);
}

inline ::testing::AssertionResult same(const real_square& got, const plain::square& want) {
  if (got.getSize() != want.size) {
    return ::testing::AssertionFailure() << "size: got " << got.getSize() << ", want " << want.size;
  }
  return same_entries(got.getData(), want.data, want.size);
}

inline ::testing::AssertionResult same(const cplx& got, plain::cnum want) {
  if (same_bits(got.re, want.re) && same_bits(got.im, want.im)) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "got (" << hex(got.re) << ", " << hex(got.im) << "), want (" << hex(want.re)
                                       << ", " << hex(want.im) << ")";
}

inline ::testing::AssertionResult same(const complex_square& got, const plain::csquare& want) {
  if (got.getSize() != want.size) {
    return ::testing::AssertionFailure() << "size: got " << got.getSize() << ", want " << want.size;
  }
  for (u32 y = 0; y < want.size; ++y) {
    for (u32 x = 0; x < want.size; ++x) {
      const auto r = same(got.get(x, y), want.get(x, y));
      if (!r) return ::testing::AssertionFailure() << place(want.at(x, y), want.size) << ": " << r.message();
    }
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult same(const complex_matrix& got, const plain::cmatrix& want) {
  if (got.getWidth() != want.width || got.getHeight() != want.height) {
    return ::testing::AssertionFailure() << "sizes differ";
  }
  for (u32 y = 0; y < want.height; ++y) {
    for (u32 x = 0; x < want.width; ++x) {
      const auto r = same(got.get(x, y), want.get(x, y));
      if (!r) return ::testing::AssertionFailure() << place(want.at(x, y), want.width) << ": " << r.message();
    }
  }
  return ::testing::AssertionSuccess();
}

// ---------------------------------------------------------------- random entries

enum class entries { ordinary, small_integers, sparse, finite, hostile, with_nan, proportional };
inline constexpr entries all_entries[] = {entries::ordinary,    entries::small_integers, entries::sparse,
                                          entries::finite,      entries::hostile,        entries::with_nan,
                                          entries::proportional};

inline double draw(random_source& random, entries kind) {
  switch (kind) {
    case entries::small_integers: return static_cast<double>(random.below(5)) - 2.0;
    case entries::sparse:
      switch (random.below(8)) {
        case 0:
        case 1:
        case 2: return 0.0;
        case 3: return -0.0;
        case 4: return 1.0;
        default: return random.uniform(-3.0, 3.0);
      }
    case entries::finite: return random.hostile_finite();
    case entries::hostile: return random.hostile();
    case entries::with_nan:
      switch (random.below(24)) {
        case 0: return quiet_nan;
        case 1: return -quiet_nan;
        case 2: return signalling_nan();
        case 3: return random.below(2) ? inf : -inf;
        default: return random.uniform(-3.0, 3.0);
      }
    default: return random.uniform(-3.0, 3.0);
  }
}

// Fills a row-major table; `parts` is 2 for complex entries. Proportional: some columns are exact
// or rounded multiples of others, and some rows repeat, so that pivots vanish or tie.
inline void fill(double* data, u32 width, u32 height, u32 parts, random_source& random, entries kind) {
  const std::size_t count = static_cast<std::size_t>(width) * height * parts;
  for (std::size_t i = 0; i < count; ++i) data[i] = draw(random, kind);
  if (kind != entries::proportional || width < 2 || height < 2) return;
  const std::size_t stride = static_cast<std::size_t>(width) * parts;
  const u32 from = random.below(width);
  const u32 to = random.below(width);
  const double factors[] = {1.0, -1.0, 2.0, -0.5, 3.0, 1.0 / 3.0};
  const double f = factors[random.below(6)];
  for (u32 y = 0; y < height; ++y) {
    for (u32 k = 0; k < parts; ++k) data[y * stride + to * parts + k] = f * data[y * stride + from * parts + k];
  }
  if (random.below(2)) {
    const u32 source = random.below(height);
    const u32 target = random.below(height);
    for (std::size_t k = 0; k < stride; ++k) data[target * stride + k] = -data[source * stride + k];
  }
}

inline plain::matrix random_matrix(u32 width, u32 height, random_source& random, entries kind) {
  plain::matrix m(width, height);
  fill(m.data.data(), width, height, 1, random, kind);
  return m;
}

inline plain::square random_square(u32 n, random_source& random, entries kind) {
  plain::square m(n);
  fill(m.data.data(), n, n, 1, random, kind);
  return m;
}

inline plain::cmatrix random_cmatrix(u32 width, u32 height, random_source& random, entries kind) {
  plain::cmatrix m(width, height);
  fill(reinterpret_cast<double*>(m.data.data()), width, height, 2, random, kind);
  return m;
}

inline plain::csquare random_csquare(u32 n, random_source& random, entries kind) {
  plain::csquare m(n);
  fill(reinterpret_cast<double*>(m.data.data()), n, n, 2, random, kind);
  return m;
}

// Every size up to 40 and some around the widths at which blocked or vector code changes its path.
inline std::vector<u32> all_sizes() {
  std::vector<u32> sizes;
  for (u32 n = 0; n <= 40; ++n) sizes.push_back(n);
  for (u32 n : {63u, 64u, 65u, 95u, 96u, 97u, 100u, 127u, 128u, 129u, 130u, 200u}) {
    sizes.push_back(n);
  }
  return sizes;
}

inline std::string describe(u32 n, entries kind) {
  return "size " + std::to_string(n) + ", entries of kind " + std::to_string(static_cast<int>(kind));
}

// ---------------------------------------------------------------- builds of the kernels

using tessarn::detail::isa;

// Chooses the build for one instruction set, and afterwards that of the run again.
class chosen_build {
 public:
  explicit chosen_build(isa wanted) : available_(tessarn::detail::force_isa(wanted) == wanted) {}
  ~chosen_build() { use_set_of_run(); }
  bool available() const { return available_; }

 private:
  bool available_;
};

}  // namespace test

// A test of kernels. The program is run once for each build of them (--isa=); each run tests its own.
#define TEST_EVERY_BUILD(suite, name) TEST(suite, name)
