// Matrices in their plainest form: a vector of entries in row-major order and loops as one would
// write them on paper. Tests compare the library with these, bit for bit where that is promised.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace plain {

using u32 = std::uint32_t;

// A quiet NaN is a NaN whose most significant fraction bit is set.
inline bool is_quiet_nan(double v) {
  std::uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return (b & 0x7FF8000000000000u) == 0x7FF8000000000000u;
}

// What a real matrix stores for the value v.
inline double stored(double v) { return is_quiet_nan(v) ? 0.0 : v; }

// Unordered values count as equal in comparisons of matrices.
inline bool differ(double a, double b) { return a < b || a > b; }

struct cnum {
  double re = 0.0;
  double im = 0.0;
};

inline cnum add(cnum a, cnum b) { return {a.re + b.re, a.im + b.im}; }
inline cnum sub(cnum a, cnum b) { return {a.re - b.re, a.im - b.im}; }
inline cnum mul(cnum a, cnum b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
inline double squared_modulus(cnum a) { return a.re * a.re + a.im * a.im; }

// An index that is not below its bound wraps around; the bound must not be 0.
inline u32 wrap(u32 i, u32 bound) { return i < bound ? i : i % bound; }

struct matrix {
  u32 width = 0;
  u32 height = 0;
  std::vector<double> data;

  matrix() = default;
  matrix(u32 w, u32 h) : width(w), height(h), data(static_cast<std::size_t>(w) * h) {}

  std::size_t at(u32 x, u32 y) const { return static_cast<std::size_t>(wrap(y, height)) * width + wrap(x, width); }
  double get(u32 x, u32 y) const { return data[at(x, y)]; }
  void set(u32 x, u32 y, double v) { data[at(x, y)] = stored(v); }
  // Without the rule for quiet NaNs.
  void put(u32 x, u32 y, double v) { data[at(x, y)] = v; }
};

struct cmatrix {
  u32 width = 0;
  u32 height = 0;
  std::vector<cnum> data;

  cmatrix() = default;
  cmatrix(u32 w, u32 h) : width(w), height(h), data(static_cast<std::size_t>(w) * h) {}

  std::size_t at(u32 x, u32 y) const { return static_cast<std::size_t>(wrap(y, height)) * width + wrap(x, width); }
  cnum get(u32 x, u32 y) const { return data[at(x, y)]; }
  void set(u32 x, u32 y, cnum v) { data[at(x, y)] = v; }
};

struct square {
  u32 size = 0;
  std::vector<double> data;

  square() = default;
  explicit square(u32 n) : size(n), data(static_cast<std::size_t>(n) * n) {}

  std::size_t at(u32 x, u32 y) const { return static_cast<std::size_t>(wrap(y, size)) * size + wrap(x, size); }
  double get(u32 x, u32 y) const { return data[at(x, y)]; }
  void set(u32 x, u32 y, double v) { data[at(x, y)] = stored(v); }
  void put(u32 x, u32 y, double v) { data[at(x, y)] = v; }
};

struct csquare {
  u32 size = 0;
  std::vector<cnum> data;

  csquare() = default;
  explicit csquare(u32 n) : size(n), data(static_cast<std::size_t>(n) * n) {}

  std::size_t at(u32 x, u32 y) const { return static_cast<std::size_t>(wrap(y, size)) * size + wrap(x, size); }
  cnum get(u32 x, u32 y) const { return data[at(x, y)]; }
  void set(u32 x, u32 y, cnum v) { data[at(x, y)] = v; }
};

// ---------------------------------------------------------------- general real matrix

inline matrix sum(const matrix& a, const matrix& b) {
  if (a.width != b.width || a.height != b.height) return matrix();
  matrix r(a.width, a.height);
  for (u32 y = 0; y < a.height; ++y) {
    for (u32 x = 0; x < a.width; ++x) r.set(x, y, a.get(x, y) + b.get(x, y));
  }
  return r;
}

inline matrix difference(const matrix& a, const matrix& b) {
  if (a.width != b.width || a.height != b.height) return matrix();
  matrix r(a.width, a.height);
  for (u32 y = 0; y < a.height; ++y) {
    for (u32 x = 0; x < a.width; ++x) r.set(x, y, a.get(x, y) - b.get(x, y));
  }
  return r;
}

inline matrix product(const matrix& a, const matrix& b) {
  if (a.width != b.height) return matrix();
  matrix result(b.width, a.height);
  for (u32 c = 0; c < b.width; ++c) {
    for (u32 r = 0; r < a.height; ++r) {
      double s = 0.0;
      for (u32 k = 0; k < a.width; ++k) s = s + a.get(k, r) * b.get(c, k);
      result.set(c, r, s);
    }
  }
  return result;
}

inline matrix scaled(const matrix& a, double s) {
  matrix r(a.width, a.height);
  for (u32 y = 0; y < a.height; ++y) {
    for (u32 x = 0; x < a.width; ++x) r.set(x, y, s * a.get(x, y));
  }
  return r;
}

// True division of each entry.
inline matrix divided(const matrix& a, double s) {
  matrix r(a.width, a.height);
  for (u32 y = 0; y < a.height; ++y) {
    for (u32 x = 0; x < a.width; ++x) r.set(x, y, a.get(x, y) / s);
  }
  return r;
}

// The other permitted form of the quotient: one reciprocal, then products.
inline matrix divided_by_reciprocal(const matrix& a, double s) { return scaled(a, 1.0 / s); }

// Matrices of different sizes compare equal.
inline bool equal(const matrix& a, const matrix& b) {
  if (a.width != b.width || a.height != b.height) return true;
  for (std::size_t i = 0; i < a.data.size(); ++i) {
    if (differ(a.data[i], b.data[i])) return false;
  }
  return true;
}

inline bool unequal(const matrix& a, const matrix& b) {
  if (a.width != b.width || a.height != b.height) return false;
  for (std::size_t i = 0; i < a.data.size(); ++i) {
    if (differ(a.data[i], b.data[i])) return true;
  }
  return false;
}

inline matrix transposed(const matrix& a) {
  matrix r(a.height, a.width);
  for (u32 y = 0; y < a.height; ++y) {
    for (u32 x = 0; x < a.width; ++x) r.put(y, x, a.get(x, y));
  }
  return r;
}

inline double column_norm(const matrix& a) {
  double s = 0.0;
  for (u32 y = 0; y < a.height; ++y) s = s + a.get(0, y) * a.get(0, y);
  return std::sqrt(s);
}

inline matrix normalized(const matrix& a) {
  if (a.width != 1) return matrix();
  return divided(a, column_norm(a));
}

inline matrix normalized_by_reciprocal(const matrix& a) {
  if (a.width != 1) return matrix();
  return divided_by_reciprocal(a, column_norm(a));
}

inline bool is_diagonal(const matrix& a) {
  for (u32 y = 0; y < a.height; ++y) {
    for (u32 x = 0; x < a.width; ++x) {
      if (x != y && differ(a.get(x, y), 0.0)) return false;
    }
  }
  return true;
}

// ---------------------------------------------------------------- square matrix

inline matrix column_of(const square& a, u32 x) {
  matrix c(1, a.size);
  for (u32 y = 0; y < a.size; ++y) c.set(0, y, a.get(x, y));
  return c;
}

inline cmatrix column_of(const csquare& a, u32 x) {
  cmatrix c(1, a.size);
  for (u32 y = 0; y < a.size; ++y) c.set(0, y, a.get(x, y));
  return c;
}

inline void set_column(square& a, u32 x, const matrix& column) {
  if (column.height != a.size || a.size == 0) return;
  for (u32 y = 0; y < a.size; ++y) a.set(x, y, column.get(0, y));
}

inline void set_column(csquare& a, u32 x, const cmatrix& column) {
  if (column.height != a.size || a.size == 0) return;
  for (u32 y = 0; y < a.size; ++y) a.set(x, y, column.get(0, y));
}

inline square transposed(const square& a) {
  square r(a.size);
  for (u32 i = 0; i < a.size; ++i) {
    for (u32 j = 0; j < a.size; ++j) r.set(i, j, a.get(j, i));
  }
  return r;
}

inline void multiply(square& a, const square& b) {
  if (a.size != b.size) return;
  square t(a.size);
  for (u32 y = 0; y < a.size; ++y) {
    for (u32 x = 0; x < a.size; ++x) {
      double s = 0.0;
      for (u32 k = 0; k < a.size; ++k) s = s + a.get(k, y) * b.get(x, k);
      t.set(x, y, s);
    }
  }
  a = t;
}

inline void multiply(csquare& a, const csquare& b) {
  if (a.size != b.size) return;
  csquare t(a.size);
  for (u32 y = 0; y < a.size; ++y) {
    for (u32 x = 0; x < a.size; ++x) {
      cnum s;
      for (u32 k = 0; k < a.size; ++k) s = add(s, mul(a.get(k, y), b.get(x, k)));
      t.set(x, y, s);
    }
  }
  a = t;
}

inline bool equal(const square& a, const square& b) {
  if (a.size != b.size) return true;
  for (std::size_t i = 0; i < a.data.size(); ++i) {
    if (differ(a.data[i], b.data[i])) return false;
  }
  return true;
}

inline bool unequal(const square& a, const square& b) { return !equal(a, b); }

}  // namespace plain
