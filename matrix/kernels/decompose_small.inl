// The reduction of a 3 x 3 matrix for the decomposition, in registers and in the order of the published algorithm, so
// that the bits are its own. Kernel sources only.
#pragma once

#include "matrix/kernels/columns.inl"

namespace tessarn::detail::TESSARN_ISA::svd {

// A sum starts with 0, which a product of -0 leaves positive.
TESSARN_INLINE double sum_2(double a, double b, double c, double d) { return (0.0 + a * b) + c * d; }
TESSARN_INLINE double sum_3(const double* a, const double* b) { return sum_2(a[0], b[0], a[1], b[1]) + a[2] * b[2]; }

// A 3 x 3 matrix in registers, reduced in the order of the published algorithm: at last the vectors of the reflections,
// those of the columns from the diagonal down and those of the rows right of it.
struct matrix_3 {
  double c0[3], c1[3], c2[3];
  double w0, w1, w2;
  double e1, e2;  // the superdiagonal
};

// Column 0, scaled, away below the diagonal.
TESSARN_INLINE void reflect_column_0(matrix_3& t) {
  double *x = t.c0, *y = t.c1, *z = t.c2;
  t.w0 = 0;
  const double scale = (magnitude(x[0]) + magnitude(x[1])) + magnitude(x[2]);
  if (scale == 0) return;
  for (size_t k = 0; k < 3; ++k) x[k] /= scale;
  const reflection p = reflect_away(x[0], (x[0] * x[0] + x[1] * x[1]) + x[2] * x[2]);
  x[0] -= p.g;
  const double f1 = sum_3(x, y) / p.denominator;
  const double f2 = sum_3(x, z) / p.denominator;
  for (size_t k = 0; k < 3; ++k) {
    y[k] += f1 * x[k];
    z[k] += f2 * x[k];
    x[k] *= scale;
  }
  t.w0 = scale * p.g;
}

// The reflection of a pair that is not (0, 0), scaled by scale.
TESSARN_INLINE reflection reflect_pair(double& x, double& y, double scale) {
  x /= scale;
  y /= scale;
  const reflection p = reflect_away(x, x * x + y * y);
  x -= p.g;
  return p;
}

// Row 0 away right of the superdiagonal.
TESSARN_INLINE void reflect_row_0(matrix_3& t) {
  double *y = t.c1, *z = t.c2;
  t.e1 = 0;
  const double scale = magnitude(y[0]) + magnitude(z[0]);
  if (scale == 0) return;
  const reflection p = reflect_pair(y[0], z[0], scale);
  const double q1 = y[0] / p.denominator;
  const double q2 = z[0] / p.denominator;
  for (size_t k = 1; k < 3; ++k) {
    const double product = sum_2(y[k], y[0], z[k], z[0]);
    y[k] += product * q1;
    z[k] += product * q2;
  }
  y[0] *= scale;
  z[0] *= scale;
  t.e1 = scale * p.g;
}

// Column 1 away below the diagonal.
TESSARN_INLINE void reflect_column_1(matrix_3& t) {
  double *y = t.c1, *z = t.c2;
  t.w1 = 0;
  const double scale = magnitude(y[1]) + magnitude(y[2]);
  if (scale == 0) return;
  const reflection p = reflect_pair(y[1], y[2], scale);
  const double f = sum_2(y[1], z[1], y[2], z[2]) / p.denominator;
  z[1] += f * y[1];
  z[2] += f * y[2];
  y[1] *= scale;
  y[2] *= scale;
  t.w1 = scale * p.g;
}

// Row 1 and column 2 have a single entry each. Its scale is its magnitude, its reflection twice that: it turns signs,
// unless something is infinite or becomes so when doubled.
TESSARN_INLINE void reflect_last(matrix_3& t) {
  const double row = t.c2[1];
  double last = t.c2[2];
  if (row != 0) last = (last - (last + last)) + zero_unless_nonfinite(row);
  t.e2 = (0 - row) + zero_unless_nonfinite(row);
  t.w2 = (0 - last) + zero_unless_nonfinite(last);
  t.c2[1] = row + row;
  t.c2[2] = last + last;
}

TESSARN_INLINE void reflect_3(matrix_3& t, const double* a) {
  for (size_t k = 0; k < 3; ++k) {
    t.c0[k] = a[3 * k];
    t.c1[k] = a[3 * k + 1];
    t.c2[k] = a[3 * k + 2];
  }
  reflect_column_0(t);
  reflect_row_0(t);
  reflect_column_1(t);
  reflect_last(t);
}

// The reflections of the rows into the columns of the unit matrix v. A quotient of a number and itself is 1 or NaN.
TESSARN_INLINE void accumulate_right_3(const matrix_3& t, double* v, size_t stride) {
  double v11 = 1, v12 = 0, v21 = 0, v22 = 1;
  if (t.e2 != 0) v22 += t.c2[1] * ((1 + zero_unless_nonfinite(t.c2[1])) / t.e2);
  if (t.e1 != 0) {
    const double first = t.c1[0], second = t.c2[0];
    const double q1 = (1 + zero_unless_nonfinite(first)) / t.e1;
    const double q2 = (second / first) / t.e1;
    const double s1 = first + second * v21;
    const double s2 = sum_2(first, v12, second, v22);
    v11 += s1 * q1;
    v21 += s1 * q2;
    v12 += s2 * q1;
    v22 += s2 * q2;
  }
  v[0] = 1;
  v[stride + 1] = v11;
  v[stride + 2] = v21;
  v[2 * stride + 1] = v12;
  v[2 * stride + 2] = v22;
}

// Those of the columns, into whole blocks of u.
TESSARN_INLINE void accumulate_left_3(const matrix_3& t, double* u, size_t stride) {
  double u00 = 1, u10 = 0, u20 = 0, u01 = 0, u11 = 1, u21 = 0, u02 = 0, u12 = 0, u22 = 1;
  if (t.w2 != 0) u22 += t.c2[2] * (1 / t.w2);
  if (t.w1 != 0) {
    const double g = 1 / t.w1;
    const double f = ((0.0 + t.c1[2] * u22) / t.c1[1]) * g;
    u12 += f * t.c1[1];
    u22 += f * t.c1[2];
    u11 += t.c1[1] * g;
    u21 = t.c1[2] * g;
  }
  if (t.w0 != 0) {
    const double* h = t.c0;
    const double g = 1 / t.w0;
    const double f1 = (sum_2(h[1], u11, h[2], u21) / h[0]) * g;
    const double f2 = (sum_2(h[1], u12, h[2], u22) / h[0]) * g;
    u01 += f1 * h[0];
    u11 += f1 * h[1];
    u21 += f1 * h[2];
    u02 += f2 * h[0];
    u12 += f2 * h[1];
    u22 += f2 * h[2];
    u00 += h[0] * g;
    u10 = h[1] * g;
    u20 = h[2] * g;
  }
  const double columns[3][block_rows] = {{u00, u10, u20}, {u01, u11, u21}, {u02, u12, u22}};
  for (size_t j = 0; j < 3; ++j)
    for (size_t k = 0; k < block_rows; ++k) u[j * stride + k] = columns[j][k];
}

}  // namespace tessarn::detail::TESSARN_ISA::svd
