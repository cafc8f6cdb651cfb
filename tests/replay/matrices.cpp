// Operations of mat and sqmat, in both instantiations.
#include <utility>

#include "replay/draw.h"

namespace replay {
namespace {

using tessarn::ulong;

constexpr unsigned n = 360;
constexpr unsigned few = 120;  // costly ones

template <class Matrix>
struct source;
template <>
struct source<real_mat> {
  static real_mat make(input& in, int largest) {
    const ulong w = draw_size(in, largest);
    const ulong h = draw_size(in, largest);
    return draw_mat(in, w, h);
  }
};
template <>
struct source<complex_mat> {
  static complex_mat make(input& in, int largest) {
    const ulong w = draw_size(in, largest);
    const ulong h = draw_size(in, largest);
    return draw_complex_mat(in, w, h);
  }
};
template <>
struct source<real_sqmat> {
  static real_sqmat make(input& in, int largest) { return draw_sqmat(in, draw_size(in, largest)); }
};
template <>
struct source<complex_sqmat> {
  static complex_sqmat make(input& in, int largest) { return draw_complex_sqmat(in, draw_size(in, largest)); }
};

// An index within or beyond the bounds.
ulong index_of(input& in) { return static_cast<ulong>(in.integer(0, 99)); }

// Stores two entries, by indices that may wrap.
template <class Matrix>
void set_two(input& in, Matrix& m) {
  using entry = decltype(m.get(0, 0));
  const ulong x = index_of(in);
  const ulong y = index_of(in);
  m.set(x, 0, draw<entry>(in));
  m.set(0, y, draw<entry>(in));
}

#define MATRIX(name, cases, M, largest, ...)                            \
  REPLAY(name, cases, M a = source<M>::make(in, largest); __VA_ARGS__), \
      REPLAY(name " const", cases, const M a = source<M>::make(in, largest); __VA_ARGS__)
#define CHANGED(name, cases, M, largest, ...) REPLAY(name, cases, M a = source<M>::make(in, largest); __VA_ARGS__)
// A second operand: one in eight of other sizes.
#define LIKE(a) draw_mat(in, (a).getWidth() + (in.integer(0, 7) == 0 ? 1 : 0), (a).getHeight())
#define PAIR(name, cases, largest, ...)                                                                                \
  REPLAY(name, cases, real_mat a = source<real_mat>::make(in, largest); real_mat b = LIKE(a); __VA_ARGS__),            \
      REPLAY(name " const", cases, const real_mat a = source<real_mat>::make(in, largest); const real_mat b = LIKE(a); \
             __VA_ARGS__)
#define PRODUCT(name, cases, Q)                                                             \
  REPLAY(name, cases, const ulong h = draw_size(in, 65); const ulong k = draw_size(in, 65); \
         const ulong w = draw_size(in, 65); const bool misfit = in.integer(0, 15) == 0;     \
         Q real_mat a = draw_mat(in, k, h); Q real_mat b = draw_mat(in, w, k + (misfit ? 1 : 0)); out.put(a * b))
#define SOLVE(name, cases, Q)                                                                                       \
  REPLAY(name, cases, const ulong w = draw_size(in, 24); const ulong h = w + static_cast<ulong>(in.integer(0, 20)); \
         Q real_mat a = draw_mat(in, w, h); Q real_mat b = draw_mat(in, 1, h); real_mat x; x.solve(a, b); out.put(x))

const operation real_mat_table[] = {
    REPLAY("mat()", 1, (void)in; out.put(real_mat())),
    MATRIX("mat copy", n, real_mat, 40, real_mat b(a); out.put(b)),
    CHANGED("mat move", n, real_mat, 40, real_mat b(std::move(a)); real_mat c; c = std::move(b); out.put(a);
            out.put(c)),
    MATRIX("mat =", n, real_mat, 40, real_mat b; b = a; out.put(b)),
    CHANGED("mat create", n, real_mat, 20, const ulong w = draw_size(in); const ulong h = draw_size(in); a.create(w, h);
            out.put(a.getWidth()); out.put(a.getHeight())),
    MATRIX("mat get", n, real_mat, 12, out.put(a.get(index_of(in), 0)); out.put(a.get(0, index_of(in)))),
    CHANGED("mat set", n, real_mat, 12, set_two(in, a); out.put(a)),
    MATRIX("mat getData, sizes", n, real_mat, 12, out.put(a.getData()[0]); out.put(a.getWidth());
           out.put(a.getHeight())),
    PAIR("mat +", n, 48, out.put(a + b)),
    PAIR("mat -", n, 48, out.put(a - b)),
    PRODUCT("mat * mat", 2 * n, ),
    PRODUCT("mat * mat const", 2 * n, const),
    MATRIX("mat * real", n, real_mat, 40, out.put(a* in.any())),
    MATRIX("real * mat", n, real_mat, 40, out.put(in.any() * a)),
    MATRIX("mat / real", n, real_mat, 40, out.put(a / in.any())),
    PAIR("mat ==", n, 8, out.put(a == b); out.put(a == a)),
    PAIR("mat !=", n, 8, out.put(a != b); out.put(a != a)),
    MATRIX("mat transpose", n, real_mat, 48, real_mat b; a.transpose(b); out.put(b)),
    REPLAY("mat normalize", n, const ulong h = draw_size(in);
           real_mat a = draw_mat(in, in.integer(0, 7) == 0 ? 2 : 1, h); out.put(a.normalize())),
    REPLAY("mat normalize const", n, const real_mat a = draw_mat(in, 1, draw_size(in)); out.put(a.normalize())),
    MATRIX("mat isDiagonal", n, real_mat, 8, out.put(a.isDiagonal()); real_mat d; d.create(3, 4);
           for (ulong i = 0; i < 12; ++i) d.set(i % 3, i / 3, i % 3 == i / 3 ? in.any() : 0); out.put(d.isDiagonal())),
    SOLVE("mat solve", 2 * n, ),
    SOLVE("mat solve const", 2 * n, const),
    REPLAY("mat invert square", n, const ulong k = draw_size(in, 8); real_mat a = draw_mat(in, k, k); real_mat b;
           a.invert(b); out.put(b)),
    MATRIX("mat invert", few, real_mat, 7, real_mat b; a.invert(b); out.put(b)),
    MATRIX("mat decompose", n, real_mat, 24, real_mat u; real_mat s; real_mat v; a.decompose(u, s, v); out.put(u);
           out.put(s); out.put(v)),
};

const operation complex_mat_table[] = {
    REPLAY("mat<cplx>()", 1, (void)in; out.put(complex_mat())),
    MATRIX("mat<cplx> copy", n, complex_mat, 20, complex_mat b(a); out.put(b)),
    CHANGED("mat<cplx> move", n, complex_mat, 20, complex_mat b(std::move(a)); complex_mat c; c = std::move(b);
            out.put(a); out.put(c)),
    MATRIX("mat<cplx> =", n, complex_mat, 20, complex_mat b; b = a; out.put(b)),
    CHANGED("mat<cplx> create", n, complex_mat, 8, const ulong w = draw_size(in, 9); const ulong h = draw_size(in, 9);
            a.create(w, h); out.put(a)),
    MATRIX("mat<cplx> get", n, complex_mat, 12, out.put(a.get(index_of(in), 0)); out.put(a.get(0, index_of(in)))),
    CHANGED("mat<cplx> set", n, complex_mat, 12, set_two(in, a); out.put(a)),
    MATRIX("mat<cplx> getData, sizes", n, complex_mat, 12, out.put(a.getData()[0]); out.put(a.getWidth());
           out.put(a.getHeight())),
};

const operation real_sqmat_table[] = {
    REPLAY("sqmat()", 1, (void)in; out.put(real_sqmat())),
    MATRIX("sqmat copy", n, real_sqmat, 40, real_sqmat b(a); out.put(b)),
    CHANGED("sqmat move", n, real_sqmat, 40, real_sqmat b(std::move(a)); real_sqmat c; c = std::move(b);
            out.put(a.getSize()); out.put(c)),
    MATRIX("sqmat =", n, real_sqmat, 40, real_sqmat b; b = a; out.put(b)),
    CHANGED("sqmat create", n, real_sqmat, 8, a.create(draw_size(in)); out.put(a.getSize()); a.create(0); out.put(a)),
    MATRIX("sqmat get", n, real_sqmat, 12, out.put(a.get(index_of(in), 0)); out.put(a.get(0, index_of(in)))),
    CHANGED("sqmat set", n, real_sqmat, 12, set_two(in, a); out.put(a)),
    MATRIX("sqmat getData, getSize", n, real_sqmat, 12, out.put(a.getData()[0]); out.put(a.getSize())),
    MATRIX("sqmat getColumn", n, real_sqmat, 40, out.put(a.getColumn(index_of(in)))),
    CHANGED("sqmat setColumn", n, real_sqmat, 20, const ulong h = in.integer(0, 7) == 0 ? 3 : a.getSize();
            const real_mat c = draw_mat(in, 1, h); a.setColumn(index_of(in), c); out.put(a)),
    MATRIX("sqmat transpose", n, real_sqmat, 48, real_sqmat b; a.transpose(b); out.put(b)),
    CHANGED("sqmat *=", n, real_sqmat, 48, real_sqmat b = draw_sqmat(in, in.integer(0, 7) == 0 ? 3 : a.getSize());
            a *= b; out.put(a)),
    CHANGED("sqmat *= const", n, real_sqmat, 48, const real_sqmat b = draw_sqmat(in, a.getSize()); a *= b; a *= a;
            out.put(a)),
    MATRIX("sqmat *", n, real_sqmat, 48, const real_sqmat b = draw_sqmat(in, in.integer(0, 7) == 0 ? 3 : a.getSize());
           out.put(a * b); out.put(b * b)),
    MATRIX("sqmat ==, !=", n, real_sqmat, 6, real_sqmat b = draw_sqmat(in, in.integer(0, 7) == 0 ? 3 : a.getSize());
           const real_sqmat c(a); out.put(a == b); out.put(a != b); out.put(a == c); out.put(a != c)),
    MATRIX("sqmat det", 2 * n, real_sqmat, 48, out.put(a.det())),
    MATRIX("sqmat cof", n, real_sqmat, 24, out.put(a.cof(index_of(in), 1)); out.put(a.cof(0, index_of(in)))),
    MATRIX("sqmat solve", 2 * n, real_sqmat, 48,
           real_mat b = draw_mat(in, static_cast<ulong>(in.integer(1, 2)), a.getSize());
           a.solve(b); out.put(b)),
    CHANGED("sqmat orthogonalize", n, real_sqmat, 24, a.orthogonalize(); out.put(a)),
    CHANGED("sqmat optimize", n, real_sqmat, 48, a.optimize(); out.put(a)),
};

constexpr int most_pairs = 24;

// Pairs of points: unrelated, or related by a turn about z by an angle whose sine is 0.6, with noise.
ulong draw_pairs(input& in, vector3d* a, vector3d* b) {
  const int count = in.integer(0, most_pairs);
  const int kind = in.integer(0, 3);
  for (int i = 0; i < count; ++i) {
    a[i] = kind == 0 ? draw<vector3d>(in) : finite_vector3d(in);
    if (kind == 0) {
      b[i] = draw<vector3d>(in);
      continue;
    }
    using tessarn::detail::product;
    constexpr real sine = static_cast<real>(0.6);
    constexpr real cosine = static_cast<real>(0.8);
    b[i].x = product(cosine, a[i].x) - product(sine, a[i].y) + 3;
    b[i].y = product(sine, a[i].x) + product(cosine, a[i].y) - 2;
    b[i].z = kind == 2 ? -a[i].z : a[i].z + (kind == 3 ? in.within(-0.1, 0.1) : 0);
  }
  return static_cast<ulong>(count);
}

real_sqmat draw_transform(input& in) {
  real_sqmat m;
  const ulong size = in.integer(0, 15) == 0 ? 3 : 4;
  m.create(size);
  for (ulong y = 0; y < size; ++y)
    for (ulong x = 0; x < size; ++x) m.set(x, y, in.any());
  return m;
}

#define TRANSFORM(name, cases, Q)                                                                \
  REPLAY(name, cases, Q real_sqmat m = draw_transform(in); Q vector3d from = draw<vector3d>(in); \
         vector3d to = draw<vector3d>(in); m.transform(from, to); out.put(to))

const operation match_table[] = {
    REPLAY("sqmat calc_match", 2 * n, vector3d a[most_pairs]; vector3d b[most_pairs];
           const ulong k = draw_pairs(in, a, b); real_sqmat m; out.put(m.calc_match(a, b, k)); out.put(m)),
    REPLAY("sqmat calc_transform", n, vector3d a[most_pairs]; vector3d b[most_pairs];
           const ulong k = draw_pairs(in, a, b); real_sqmat m; m.calc_transform(a, b, k); out.put(m)),
    TRANSFORM("sqmat transform", 2 * n, ),
    TRANSFORM("sqmat transform const", 2 * n, const),
    REPLAY("sqmat transform points", n, const real_sqmat m = draw_transform(in); vector3d a[most_pairs];
           vector3d b[most_pairs]; const ulong k = draw_pairs(in, a, b); m.transform(a, b, k);
           for (ulong i = 0; i < k; ++i) out.put(b[i])),
};

const operation complex_sqmat_table[] = {
    REPLAY("sqmat<cplx>()", 1, (void)in; out.put(complex_sqmat())),
    MATRIX("sqmat<cplx> copy", n, complex_sqmat, 20, complex_sqmat b(a); out.put(b)),
    CHANGED("sqmat<cplx> move", n, complex_sqmat, 20, complex_sqmat b(std::move(a)); complex_sqmat c; c = std::move(b);
            out.put(a.getSize()); out.put(c)),
    MATRIX("sqmat<cplx> =", n, complex_sqmat, 20, complex_sqmat b; b = a; out.put(b)),
    CHANGED("sqmat<cplx> create", n, complex_sqmat, 8, a.create(draw_size(in, 9)); out.put(a); a.create(0); out.put(a)),
    MATRIX("sqmat<cplx> get", n, complex_sqmat, 12, out.put(a.get(index_of(in), 0)); out.put(a.get(0, index_of(in)))),
    CHANGED("sqmat<cplx> set", n, complex_sqmat, 12, set_two(in, a); out.put(a)),
    MATRIX("sqmat<cplx> getColumn", n, complex_sqmat, 20, out.put(a.getColumn(index_of(in)))),
    CHANGED("sqmat<cplx> setColumn", n, complex_sqmat, 12, const ulong h = in.integer(0, 7) == 0 ? 3 : a.getSize();
            const complex_mat c = draw_complex_mat(in, 1, h); a.setColumn(index_of(in), c); out.put(a)),
    CHANGED("sqmat<cplx> *=", n, complex_sqmat, 40,
            complex_sqmat b = draw_complex_sqmat(in, in.integer(0, 7) == 0 ? 3 : a.getSize());
            a *= b; out.put(a)),
    CHANGED("sqmat<cplx> *= const", n, complex_sqmat, 40, const complex_sqmat b = draw_complex_sqmat(in, a.getSize());
            a *= b; a *= a; out.put(a)),
    MATRIX("sqmat<cplx> *", n, complex_sqmat, 40,
           const complex_sqmat b = draw_complex_sqmat(in, in.integer(0, 7) == 0 ? 3 : a.getSize());
           out.put(a * b); out.put(b * b)),
    MATRIX("sqmat<cplx> det", 2 * n, complex_sqmat, 40, out.put(a.det())),
    MATRIX("sqmat<cplx> cof", n, complex_sqmat, 17, out.put(a.cof(index_of(in), 1)); out.put(a.cof(0, index_of(in)))),
    MATRIX("sqmat<cplx> solve", 2 * n, complex_sqmat, 40, complex_mat b = draw_complex_mat(in, 1, a.getSize());
           a.solve(b); out.put(b)),
    CHANGED("sqmat<cplx> orthogonalize", n, complex_sqmat, 20, a.orthogonalize(); out.put(a)),
    CHANGED("sqmat<cplx> optimize", n, complex_sqmat, 40, a.optimize(); out.put(a)),
};

}  // namespace

const family real_matrices = family_of(real_mat_table);
const family complex_matrices = family_of(complex_mat_table);
const family real_squares = family_of(real_sqmat_table);
const family matches = family_of(match_table);
const family complex_squares = family_of(complex_sqmat_table);

}  // namespace replay
