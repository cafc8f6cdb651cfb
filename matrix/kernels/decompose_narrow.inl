// The reduction of one or two columns for the decomposition, in the order of the published algorithm, so that the bits
// are its own: the signs of pairs of columns depend on the number of sweeps, and that on roundings. Kernel sources
// only.
#pragma once

#include "matrix/kernels/bidiagonalise.inl"

namespace tessarn::detail::TESSARN_ISA::svd {

// Columns and the row are scaled always, as published.
static void bidiagonalise_narrow(decomposition& d) {
  d.rv1[0] = 0;
  d.w[0] = d.m > 0 ? scaled_column_step(d, 0) : 0;
  raise_norm(d, 0);
  if (d.n < 2) return;
  double* c = d.u + d.u_stride;
  const double scale = d.m > 0 ? magnitude(c[0]) : 0;
  d.rv1[1] = 0;
  if (scale != 0) {
    double r = c[0] / scale;
    const reflection p = reflect_away(r, r * r);
    r -= p.g;
    const double ratio = r / p.denominator;
    for (size_t k = 1; k < d.m; ++k) c[k] += (0.0 + c[k] * r) * ratio;
    c[0] = r * scale;
    d.rv1[1] = scale * p.g;
  }
  d.w[1] = d.m > 1 ? scaled_column_step(d, 1) : 0;
  raise_norm(d, 1);
}

// The reflections of the row into V, and of the columns into U, in their place. A quotient of a number and itself is
// written as 1, or NaN where the number is not finite.
static void accumulate_narrow(decomposition& d) {
  d.v[0] = 1;
  if (d.n > 1) {
    double& last = d.v[d.v_stride + 1];
    const double r = d.u[d.u_stride];
    last = 1;
    if (d.rv1[1] != 0) last += r * ((1 + zero_unless_nonfinite(r)) / d.rv1[1]);
  }
  for (size_t i = d.m < d.n ? d.m : d.n; i-- > 0;) {
    double* h = d.u + i * d.u_stride;
    double* c = h + d.u_stride;
    const bool later = i + 1 < d.n;
    if (later) c[i] = 0;
    if (d.w[i] != 0) {
      const double g = 1 / d.w[i];
      if (later) {
        double sum = 0;
        for (size_t k = i + 1; k < d.m; ++k) sum += h[k] * c[k];
        const double f = (sum / h[i]) * g;
        for (size_t k = i; k < d.m; ++k) c[k] += f * h[k];
      }
      for (size_t k = i; k < d.m; ++k) h[k] *= g;
    } else {
      for (size_t k = i; k < d.m; ++k) h[k] = 0;
    }
    h[i] += 1;
  }
}

}  // namespace tessarn::detail::TESSARN_ISA::svd
