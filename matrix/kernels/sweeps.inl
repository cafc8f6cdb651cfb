// The QR sweeps that make a bidiagonal matrix diagonal. Kernel sources only.
#pragma once

#include "matrix/kernels/decomposition.inl"

namespace tessarn::detail::TESSARN_ISA::svd {

static constexpr int sweep_limit = 30;  // a value that takes more is left as it is

// Makes the superdiagonal entry l zero by rotations, since the diagonal entry before it is negligible.
static void cancel(decomposition& d, size_t l, size_t k) {
  double c = 0, s = 1;
  for (size_t i = l; i <= k; ++i) {
    const double f = s * d.rv1[i];
    d.rv1[i] = c * d.rv1[i];
    if (magnitude(f) + d.norm == d.norm) break;
    const double g = d.w[i];
    d.w[i] = hypotenuse(g, f);
    const double r = 1 / d.w[i];
    c = g * r;
    s = -(f * r);
    rotate(d.left + (l - 1) * d.left_stride, (i - l + 1) * d.left_stride, c, s, d.left_rows);
  }
}

// The f of the first rotation of a sweep on the block l .. k, which acts on (f, rv1[l + 1]): from the shift, the
// eigenvalue of the trailing 2 x 2 block that the publication chooses. x, y, z, g and h are the names that it uses.
static double shifted(const decomposition& d, size_t l, size_t k) {
  const double x = d.w[l];
  const double y = d.w[k - 1];
  const double z = d.w[k];
  const double g = d.rv1[k - 1];
  const double h = d.rv1[k];
  const double f = ((y - z) * (y + z) + (g - h) * (g + h)) / ((h + h) * y);
  return ((x - z) * (x + z) + h * (y / (f + with_sign(hypotenuse(f, 1), f)) - h)) / x;
}

// The entries of the bidiagonal matrix that the next rotation of a sweep changes:
//
//   right rotation j, of columns j and j + 1     left rotation j, of rows j and j + 1
//     row j - 1    first     bulge                 row j        first     super     0
//     row j        diagonal  super                 row j + 1    bulge     next      after
//     row j + 1    0         next
//
// Each turns the pair (first, bulge) into (length, 0) and makes the pair of the next one.
struct sweep_step {
  double first, bulge;
  double diagonal, super, next;
  double cosine, sine;  // of the rotation made last
};

// Right rotation j. In published order it computes as the publication does. Else one reciprocal of the length takes the
// place of the quotients, and the numerators do not wait for it. The reciprocal does not overflow: a length is the root
// of a sum of squares, 0 or far above the smallest numbers. The length is stored as soon as it is known; stored by the
// caller, sweeps take 1.05 times as long with AVX2.
TESSARN_INLINE void rotate_right(decomposition& d, size_t j, sweep_step& t) {
  t.super = t.cosine * d.rv1[j + 1];
  t.next = d.w[j + 1];
  const double length = hypotenuse(t.first, t.bulge);
  d.rv1[j] = length;
  if (d.published_order) {
    t.cosine = t.first / length;
    t.sine = t.bulge / length;
    t.first = t.diagonal * t.cosine + t.super * t.sine;
    t.super = t.super * t.cosine - t.diagonal * t.sine;
    t.bulge = t.next * t.sine;
  } else {
    const double r = 1 / length;
    t.cosine = t.first * r;
    t.sine = t.bulge * r;
    const double turned = (t.diagonal * t.first + t.super * t.bulge) * r;
    t.super = (t.super * t.first - t.diagonal * t.bulge) * r;
    t.bulge = (t.next * t.bulge) * r;
    t.first = turned;
  }
  t.next = t.next * t.cosine;
}

// Left rotation j of a sweep up to k, like the right one. Where the length is 0 it keeps the cosine and sine of the
// right rotation, as published.
TESSARN_INLINE void rotate_left(decomposition& d, size_t j, size_t k, sweep_step& t) {
  const double length = hypotenuse(t.first, t.bulge);
  d.w[j] = length;
  const double after = j + 1 < k ? d.rv1[j + 2] : 0;
  if (length != 0 && !d.published_order) {
    const double r = 1 / length;
    t.cosine = t.first * r;
    t.sine = t.bulge * r;
    const double turned = (t.first * t.super + t.bulge * t.next) * r;
    t.diagonal = (t.first * t.next - t.bulge * t.super) * r;
    t.bulge = (t.bulge * after) * r;
    t.first = turned;
  } else {
    if (length != 0) {
      t.cosine = t.first / length;
      t.sine = t.bulge / length;
    }
    t.first = t.cosine * t.super + t.sine * t.next;
    t.diagonal = t.cosine * t.next - t.sine * t.super;
    t.bulge = t.sine * after;
  }
}

// Applies the rotations of a sweep to the columns of V or U. The sweep does not depend on these: where DIRECT, a
// rotation is applied one step late, while the processor waits for the roots of that step; else all are collected and
// applied at the end.
template <bool DIRECT>
struct column_rotations {
  double* columns;  // of the first rotation
  size_t stride, rows;
  double* rotations;

  // Rotation number i of the sweep.
  TESSARN_MEMBER void add(size_t i, double cosine, double sine) const {
    if (DIRECT && i > 0) rotate(columns + (i - 1) * stride, stride, rotations[0], rotations[1], rows);
    double* to = DIRECT ? rotations : rotations + 2 * i;
    to[0] = cosine;
    to[1] = sine;
  }
  // After count rotations.
  TESSARN_MEMBER void finish(size_t count) const {
    if (DIRECT)
      rotate(columns + (count - 1) * stride, stride, rotations[0], rotations[1], rows);
    else
      rotate_columns(columns, stride, rows, rotations, count);
  }
};

// One implicit QR sweep on the block l .. k.
template <bool DIRECT>
static void sweep(decomposition& d, size_t l, size_t k) {
  const column_rotations<DIRECT> right = {d.v + l * d.v_stride, d.v_stride, whole_blocks(d.n), d.right_rotations};
  const column_rotations<DIRECT> left = {d.left + l * d.left_stride, d.left_stride, d.left_rows, d.left_rotations};
  sweep_step t = {shifted(d, l, k), d.rv1[l + 1], d.w[l], 0, 0, 1, 1};
  for (size_t j = l; j < k; ++j) {
    rotate_right(d, j, t);
    right.add(j - l, t.cosine, t.sine);
    rotate_left(d, j, k, t);
    left.add(j - l, t.cosine, t.sine);
  }
  d.rv1[l] = 0;
  d.rv1[k] = t.first;
  d.w[k] = t.diagonal;
  right.finish(k - l);
  left.finish(k - l);
}

// Brings singular value k to convergence, or gives up after the last sweep without a further test.
static void diagonalise(decomposition& d, size_t k) {
  const bool direct = d.left_rows + whole_blocks(d.n) <= direct_rows;
  for (int sweeps = 0; sweeps < sweep_limit; ++sweeps) {
    size_t l = k;
    bool cancellation = false;
    for (; l > 0; --l) {
      if (magnitude(d.rv1[l]) + d.norm == d.norm) break;
      if (magnitude(d.w[l - 1]) + d.norm == d.norm) {
        cancellation = true;
        break;
      }
    }
    if (cancellation) cancel(d, l, k);
    if (l == k) {
      if (!(d.w[k] >= 0)) {
        d.w[k] = -d.w[k];
        double* v = d.v + k * d.v_stride;
        for (size_t r = 0; r < d.n; ++r) v[r] = -v[r];
      }
      return;
    }
    if (direct)
      sweep<true>(d, l, k);
    else
      sweep<false>(d, l, k);
  }
}

}  // namespace tessarn::detail::TESSARN_ISA::svd
