// Operands drawn for operations, and the texts from which the tables of operations are made. Products that feed sums go
// through detail::product: the program is also compiled with the flags of callers that fuse.
#pragma once

#include "replay/record.h"

namespace replay {

template <class T>
T draw(input& in);

template <>
inline real draw<real>(input& in) {
  return in.any();
}

// The members are evaluated in the order of the statements; the order of arguments is not fixed.
template <>
inline cplx draw<cplx>(input& in) {
  const real re = in.any();
  const real im = in.any();
  return cplx(re, im);
}

template <>
inline vector draw<vector>(input& in) {
  const real x = in.any();
  const real y = in.any();
  return vector(x, y);
}

template <>
inline vector3d draw<vector3d>(input& in) {
  const real x = in.any();
  const real y = in.any();
  const real z = in.any();
  return vector3d(x, y, z);
}

template <>
inline polarvector3d draw<polarvector3d>(input& in) {
  const real alpha = in.any();
  const real beta = in.any();
  const real len = in.any();
  return polarvector3d(alpha, beta, len);
}

inline vector3d finite_vector3d(input& in) {
  const real x = in.finite();
  const real y = in.finite();
  const real z = in.finite();
  return vector3d(x, y, z);
}

// The size of a matrix: mostly small, sometimes large enough for the blocks of the kernels.
inline tessarn::ulong draw_size(input& in, int largest = 48) {
  constexpr int large[] = {9, 10, 12, 15, 16, 17, 20, 24, 31, 32, 33, 40, 47, 48, 64, 65};
  const int choice = in.integer(1, 20);
  int n = choice <= 16 ? 1 + choice % 8 : large[in.integer(0, 15)];
  if (n > largest) n = 1 + n % largest;
  return static_cast<tessarn::ulong>(n);
}

// Fills n entries: written out one by one when they are few, from a seed when they are many.
template <class Set>
void draw_entries(input& in, std::size_t n, Set set) {
  constexpr std::size_t few = 36;
  const int kind = in.integer(0, 3);
  if (n > few) {
    test::random_source random(in.seed());  // of ranges whose width is a power of two: nothing is there to fuse
    for (std::size_t i = 0; i < n; ++i)
      set(i, static_cast<real>(kind == 0 ? static_cast<double>(random.below(7)) - 3.0 : random.uniform(-4.0, 4.0)));
    return;
  }
  for (std::size_t i = 0; i < n; ++i)
    set(i, kind == 0 ? static_cast<real>(in.integer(-3, 3)) : kind == 1 ? in.any() : in.finite());
}

template <class Matrix>
void fill_real(input& in, Matrix& m, tessarn::ulong w, tessarn::ulong h) {
  draw_entries(in, static_cast<std::size_t>(w) * h, [&](std::size_t i, real v) {
    m.set(static_cast<tessarn::ulong>(i % w), static_cast<tessarn::ulong>(i / w), v);
  });
}

template <class Matrix>
void fill_complex(input& in, Matrix& m, tessarn::ulong w, tessarn::ulong h) {
  cplx z;
  draw_entries(in, 2 * static_cast<std::size_t>(w) * h, [&](std::size_t i, real v) {
    const std::size_t entry = i / 2;
    (i % 2 == 0 ? z.re : z.im) = v;
    if (i % 2 == 1) m.set(static_cast<tessarn::ulong>(entry % w), static_cast<tessarn::ulong>(entry / w), z);
  });
}

inline real_mat draw_mat(input& in, tessarn::ulong w, tessarn::ulong h) {
  real_mat m;
  m.create(w, h);
  fill_real(in, m, w, h);
  return m;
}

inline complex_mat draw_complex_mat(input& in, tessarn::ulong w, tessarn::ulong h) {
  complex_mat m;
  m.create(w, h);
  fill_complex(in, m, w, h);
  return m;
}

inline real_sqmat draw_sqmat(input& in, tessarn::ulong n) {
  real_sqmat m;
  m.create(n);
  fill_real(in, m, n, n);
  return m;
}

inline complex_sqmat draw_complex_sqmat(input& in, tessarn::ulong n) {
  complex_sqmat m;
  m.create(n);
  fill_complex(in, m, n, n);
  return m;
}

template <class Draw>
binom draw_polynomial(input& in, int least, int most, Draw coefficient) {
  binom p;
  const int n = in.integer(least, most);
  p.create(static_cast<tessarn::slong>(n));
  for (int i = 0; i < n; ++i) p.set(static_cast<tessarn::slong>(i), coefficient());
  return p;
}

template <>
inline binom draw<binom>(input& in) {
  return draw_polynomial(in, 0, 8, [&] { return in.any(); });
}

template <>
inline hyperbinom draw<hyperbinom>(input& in) {
  hyperbinom p;
  const int g = in.integer(0, 4);
  p.create(static_cast<tessarn::slong>(g));
  for (int j = 0; j < g; ++j)
    for (int i = 0; i < g; ++i) p.set(static_cast<tessarn::slong>(i), static_cast<tessarn::slong>(j), in.any());
  return p;
}

// Points along a bent, noisy line; some marked, some hostile.
inline vector draw_point(input& in, int i, int kind) {
  if (kind == 0) return draw<vector>(in);
  if (kind == 1) {
    const int x = in.integer(-3, 3);
    const int y = in.integer(-3, 3);
    return vector(x, y);
  }
  const real x = static_cast<real>(i) + in.within(-0.25, 0.25);
  const real y = tessarn::detail::product(static_cast<real>(0.5), static_cast<real>(i)) + in.within(-0.5, 0.5);
  return in.integer(0, 19) == 0 ? vector(-1, y) : vector(x, y);
}

template <>
inline vectormat draw<vectormat>(input& in) {
  vectormat list;
  const int n = in.integer(0, 30);
  const int kind = in.integer(0, 3);
  for (int i = 0; i < n; ++i) list.add(draw_point(in, i, kind));
  return list;
}

template <>
inline plane draw<plane>(input& in) {
  plane p;
  p.origin = draw<vector3d>(in);
  p.normal = draw<vector3d>(in);
  p.axis1 = draw<vector3d>(in);
  p.axis2 = draw<vector3d>(in);
  return p;
}

template <>
inline line3d draw<line3d>(input& in) {
  const vector3d start = draw<vector3d>(in);
  const vector3d end = draw<vector3d>(in);
  return line3d(start, end);
}

// Makes a table of operations known to the program.
template <std::size_t n>
constexpr family family_of(const operation (&operations)[n]) {
  return {operations, n};
}

}  // namespace replay

// Texts of operations. The operands are drawn in their order; `out` takes the results. Each text is compiled for
// variables and, with CONST, for constants, which other members serve.
#define REPLAY(name, cases, ...)                             \
  {                                                          \
    name, cases, [](input& in, output& out) { __VA_ARGS__; } \
  }
#define ONE(name, cases, A, ...)                       \
  REPLAY(name, cases, A a = draw<A>(in); __VA_ARGS__), \
      REPLAY(name " const", cases, const A a = draw<A>(in); __VA_ARGS__)

#define TWO(name, cases, A, B, ...)                                       \
  REPLAY(name, cases, A a = draw<A>(in); B b = draw<B>(in); __VA_ARGS__), \
      REPLAY(name " const", cases, const A a = draw<A>(in); const B b = draw<B>(in); __VA_ARGS__)

// The left operand changes.
#define INTO(name, cases, A, B, ...)                                      \
  REPLAY(name, cases, A a = draw<A>(in); B b = draw<B>(in); __VA_ARGS__), \
      REPLAY(name " const", cases, A a = draw<A>(in); const B b = draw<B>(in); __VA_ARGS__)
