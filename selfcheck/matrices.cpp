// The self-check of matrices: small ones and such that fill the blocks of the kernels.
#include "selfcheck/members.h"

namespace tessarn::detail {
namespace {

using real_mat = mat<long double>;
using complex_mat = mat<cplx>;
using real_sqmat = sqmat<long double>;
using complex_sqmat = sqmat<cplx>;

real_mat matrix(inputs& in, ulong width, ulong height) {
  real_mat m;
  m.create(width, height);
  for (ulong y = 0; y < height; ++y)
    for (ulong x = 0; x < width; ++x) m.set(x, y, in.number());
  return m;
}
real_sqmat square(inputs& in, ulong size) {
  real_sqmat m;
  m.create(size);
  for (ulong y = 0; y < size; ++y)
    for (ulong x = 0; x < size; ++x) m.set(x, y, in.number());
  return m;
}
complex_mat complex_column(inputs& in, ulong height) {
  complex_mat m;
  m.create(1, height);
  for (ulong y = 0; y < height; ++y) m.set(0, y, in.complex());
  return m;
}
complex_sqmat complex_square(inputs& in, ulong size) {
  complex_sqmat m;
  m.create(size);
  for (ulong y = 0; y < size; ++y)
    for (ulong x = 0; x < size; ++x) m.set(x, y, in.complex());
  return m;
}

// From 1 up to most.
ulong size_of(inputs& in, ulong most) { return 1 + in.below(most); }

#define ANY TESSARN_MEMBER_HOSTILE
#define ORDINARY TESSARN_MEMBER_ORDINARY

constexpr selfcheck_member real_matrices[] = {
    ANY("mat sum and difference", 4, const ulong w = size_of(in, 9); const ulong h = size_of(in, 9);
        const real_mat a = matrix(in, w, h); const real_mat b = matrix(in, w, h); out.put(a + b); out.put(a - b)),
    ANY("mat product", 6, const ulong w = size_of(in, 12); const ulong k = size_of(in, 12);
        const ulong h = size_of(in, 12); const real_mat a = matrix(in, k, h); const real_mat b = matrix(in, w, k);
        out.put(a * b)),
    ORDINARY("mat product, 37 x 41 by 41 x 29", 1, const real_mat a = matrix(in, 41, 37);
             const real_mat b = matrix(in, 29, 41); out.put(a * b)),
    ANY("mat scaling", 4, const real_mat a = matrix(in, size_of(in, 9), 5); out.put(a * in.number());
        out.put(a / in.number())),
    ANY("mat comparisons", 12, const real_mat a = matrix(in, 2, 1);
        const real_mat b = in.below(2) == 0 ? matrix(in, 2, 1) : a; out.put(a == b); out.put(a != b)),
    ANY("mat::transpose", 4, const real_mat a = matrix(in, size_of(in, 9), 7); real_mat b; a.transpose(b); out.put(b)),
    ANY("mat::normalize", 4, const real_mat a = matrix(in, 1, size_of(in, 9)); out.put(a.normalize())),
    ANY("mat::solve", 4, const ulong w = size_of(in, 6); const ulong h = w + in.below(6);
        const real_mat a = matrix(in, w, h); const real_mat b = matrix(in, 1, h); real_mat x; x.solve(a, b);
        out.put(x)),
    ORDINARY("mat::solve, 18 x 30", 1, const real_mat a = matrix(in, 18, 30); const real_mat b = matrix(in, 1, 30);
             real_mat x; x.solve(a, b); out.put(x)),
    ANY("mat::invert", 3, const real_mat a = matrix(in, 4, 4); real_mat b; a.invert(b); out.put(b)),
    ORDINARY("mat::invert, 5 x 7", 1, const real_mat a = matrix(in, 5, 7); real_mat b; a.invert(b); out.put(b)),
    ORDINARY("mat::decompose", 4, const ulong w = size_of(in, 8); const real_mat a = matrix(in, w, size_of(in, 8));
             real_mat u; real_mat s; real_mat v; a.decompose(u, s, v); out.put(u); out.put(s); out.put(v)),
    ANY("sqmat product", 4, const ulong k = size_of(in, 12); const real_sqmat a = square(in, k);
        const real_sqmat b = square(in, k); out.put(a * b)),
    ANY("sqmat::transpose, getColumn", 3, const real_sqmat a = square(in, size_of(in, 9)); real_sqmat b; a.transpose(b);
        out.put(b); out.put(a.getColumn(0))),
    ANY("sqmat::det", 6, const real_sqmat a = square(in, size_of(in, 9)); out.put(a.det())),
    ORDINARY("sqmat::det, 33 x 33", 1, const real_sqmat a = square(in, 33); out.put(a.det())),
    ANY("sqmat::cof", 4, const real_sqmat a = square(in, 1 + size_of(in, 6)); out.put(a.cof(0, 1));
        out.put(a.cof(1, 1))),
    ANY("sqmat::solve", 4, const ulong k = size_of(in, 9); const real_sqmat a = square(in, k);
        real_mat b = matrix(in, 1, k); a.solve(b); out.put(b)),
    ORDINARY("sqmat::solve, 33 x 33", 1, const real_sqmat a = square(in, 33); real_mat b = matrix(in, 1, 33);
             a.solve(b); out.put(b)),
    ANY("sqmat::orthogonalize", 3, real_sqmat a = square(in, size_of(in, 9)); a.orthogonalize(); out.put(a)),
    ANY("sqmat::optimize", 3, real_sqmat a = square(in, size_of(in, 9)); a.optimize(); out.put(a)),
    ORDINARY("sqmat::calc_match", 4, vector3d a[9]; vector3d b[9]; in.fill(a); in.fill(b); real_sqmat m;
             out.put(m.calc_match(a, b, 9)); out.put(m)),
    ORDINARY("sqmat::calc_transform", 4, vector3d a[9]; vector3d b[9]; in.fill(a); in.fill(b); real_sqmat m;
             m.calc_transform(a, b, 9); out.put(m)),
    ANY("sqmat::transform", 8, const real_sqmat m = square(in, 4); const vector3d from = in.space_vector(); vector3d to;
        m.transform(from, to); out.put(to)),
};

constexpr selfcheck_member complex_matrices[] = {
    ANY("mat<cplx>::set, get", 4, const complex_mat a = complex_column(in, size_of(in, 9)); out.put(a)),
    ANY("sqmat<cplx> product", 4, const ulong k = size_of(in, 9); const complex_sqmat a = complex_square(in, k);
        const complex_sqmat b = complex_square(in, k); out.put(a * b)),
    ANY("sqmat<cplx>::det", 4, const complex_sqmat a = complex_square(in, size_of(in, 9)); out.put(a.det())),
    ANY("sqmat<cplx>::cof", 3, const complex_sqmat a = complex_square(in, 1 + size_of(in, 6)); out.put(a.cof(0, 1))),
    ANY("sqmat<cplx>::solve", 4, const ulong k = size_of(in, 9); const complex_sqmat a = complex_square(in, k);
        complex_mat b = complex_column(in, k); a.solve(b); out.put(b)),
    ORDINARY("sqmat<cplx>::det, 19 x 19", 1, const complex_sqmat a = complex_square(in, 19); out.put(a.det())),
    ANY("sqmat<cplx>::orthogonalize", 3, complex_sqmat a = complex_square(in, size_of(in, 6)); a.orthogonalize();
        out.put(a)),
    ANY("sqmat<cplx>::optimize", 3, complex_sqmat a = complex_square(in, size_of(in, 6)); a.optimize(); out.put(a)),
};

}  // namespace

constinit const selfcheck_family selfcheck_matrices = family_of(real_matrices);
constinit const selfcheck_family selfcheck_complex_matrices = family_of(complex_matrices);

}  // namespace tessarn::detail
