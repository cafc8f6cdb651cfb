// The members that sample a curve and fit through the samples: the mean ratio of two polynomials, the inverse function.
#include <cstdint>
#include <memory>
#include <new>

#include "tessarn/poly.h"

using tessarn::real;

namespace {

// The number of samples from a to b at the distance h: the low 32 bits of the truncated (b - a)/h + 1. A negative
// number, from h that leads away from b, throws at once: its low 32 bits would ask for thousands of millions of samples
// outside the interval. A NaN, and what 64 bits do not hold, count as 0 samples.
tessarn::ulong sample_count(real a, real b, real h) {
  const real n = (b - a) / h + 1;
  constexpr real limit = static_cast<real>(9223372036854775808.0);
  if (!(n >= -limit && n < limit)) return 0;
  if (n <= -1) throw std::bad_array_new_length();
  return static_cast<tessarn::ulong>(static_cast<std::uint64_t>(static_cast<std::int64_t>(n)));
}

}  // namespace

// The mean of this polynomial's values divided by those of q, as the fit of one coefficient forms it. Samples where q
// is 0 or NaN are left out, since there is no ratio.
real binom::scalar(binom& q, real a, real b, real h) {
  const tessarn::ulong n = sample_count(a, b, h);
  std::unique_ptr<vector[]> ratios(new vector[n]);
  tessarn::ulong count = 0;
  for (tessarn::ulong i = 0; i < n; ++i) {
    const real x = static_cast<real>(i) * h + a;
    const real d = q.func(x);
    if (d == 0 || d != d) continue;
    ratios[count].x = x;
    ratios[count].y = func(x) / d;
    ++count;
  }
  if (count == 0) return 0;
  binom mean;
  mean.create(ratios.get(), count, 1);
  return mean.get(0);
}

// Fits through the samples with their coordinates exchanged.
binom binom::antifunction(real a, real b, real h) {
  const tessarn::ulong n = sample_count(a, b, h);
  std::unique_ptr<vector[]> samples(new vector[n]);
  for (tessarn::ulong i = 0; i < n; ++i) {
    const real x = static_cast<real>(i) * h + a;
    samples[i].x = func(x);
    samples[i].y = x;
  }
  binom inverse;
  inverse.create(samples.get(), n, static_cast<tessarn::ulong>(cofcnt));
  return inverse;
}
