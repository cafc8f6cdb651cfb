// Exact polynomials: numbers of the form m 2^e, evaluation, sums and products.
#include "analysis/exact_polynomial.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "analysis/doubled.h"

namespace tessarn::analysis {

namespace {

integer shifted(const integer& v, std::size_t count) {
  integer s = v;
  s <<= count;
  return s;
}

double next_up(double v) noexcept {  // for v >= 0
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  ++bits;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

// The largest double that is not above v >= 0; `exact` tells whether it is v.
double truncated(const dyadic& v, bool& exact) noexcept {
  exact = true;
  if (v.m.sign() == 0) return 0;
  exact = false;
  const long long top = static_cast<long long>(v.m.bits()) - 1 + v.e;
  if (top > 1023) return std::numeric_limits<double>::max();
  if (top < -1074) return 0;
  const int kept_bits = top >= -1022 ? 53 : static_cast<int>(top) + 1075;
  bool rest;
  const std::uint64_t leading = v.m.leading(rest);
  exact = !rest && leading << kept_bits == 0;
  return scaled(static_cast<double>(leading >> (64 - kept_bits)), static_cast<int>(top) + 1 - kept_bits);
}

}  // namespace

dyadic::dyadic(double v) {
  if (v == 0) return;
  const int exponent = exponent_of(v);
  e = std::max(exponent, -1022) - 52;
  m = integer(static_cast<std::uint64_t>(scaled(std::fabs(v), -e)));
  const std::size_t zeros = m.low_zeros();
  m >>= zeros;
  e += static_cast<int>(zeros);
  if (v < 0) m.negate();
}

int compare(const dyadic& a, const dyadic& b) {
  if (a.m.sign() != b.m.sign()) return a.m.sign() < b.m.sign() ? -1 : 1;
  const int e = std::min(a.e, b.e);
  integer d = shifted(a.m, static_cast<std::size_t>(a.e - e));
  d -= shifted(b.m, static_cast<std::size_t>(b.e - e));
  return d.sign();
}

dyadic middle(const dyadic& a, const dyadic& b) {
  const int e = std::min(a.e, b.e);
  integer s = shifted(a.m, static_cast<std::size_t>(a.e - e));
  s += shifted(b.m, static_cast<std::size_t>(b.e - e));
  const std::size_t zeros = s.low_zeros();
  s >>= zeros;
  return {std::move(s), e - 1 + static_cast<int>(zeros)};
}

double double_below(const dyadic& v) noexcept {
  bool exact;
  return truncated(v, exact);
}

double double_above(const dyadic& v) noexcept {
  bool exact;
  const double below = truncated(v, exact);
  return exact ? below : next_up(below);
}

polynomial exact_coefficients(column_view coefficients, int& exponent) {
  std::size_t n = coefficients.size();
  while (n != 0 && coefficients[n - 1] == 0) --n;
  polynomial p(n);
  sequence<int> exponents(n);
  exponent = std::numeric_limits<int>::max();
  for (std::size_t k = 0; k < n; ++k) {
    dyadic c(static_cast<double>(coefficients[k]));
    p[k] = std::move(c.m);
    exponents[k] = c.e;
    if (p[k].sign() != 0) exponent = std::min(exponent, c.e);
  }
  for (std::size_t k = 0; k < n; ++k)
    if (p[k].sign() != 0) p[k] <<= static_cast<std::size_t>(exponents[k] - exponent);
  return p;
}

void trim(polynomial& p) noexcept {
  std::size_t n = p.size();
  while (n != 0 && p[n - 1].sign() == 0) --n;
  p.shorten(n);
}

std::uint64_t most_digits(const polynomial& p) noexcept {
  std::uint64_t most = 0;
  for (const integer& c : p) most = std::max<std::uint64_t>(most, c.digits());
  return most;
}

polynomial derivative(const polynomial& p) {
  polynomial d(p.empty() ? 0 : p.size() - 1);
  for (std::size_t k = 0; k < d.size(); ++k) {
    d[k] = p[k + 1];
    d[k] *= static_cast<std::uint32_t>(k + 1);
  }
  return d;
}

polynomial product(const polynomial& a, const polynomial& b) {
  if (a.empty() || b.empty()) return {};
  polynomial p(a.size() + b.size() - 1);
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t k = 0; k < b.size(); ++k) p[i + k] += a[i] * b[k];
  return p;
}

polynomial sum(const polynomial& a, const polynomial& b) {
  polynomial s(std::max(a.size(), b.size()));
  for (std::size_t i = 0; i < a.size(); ++i) s[i] += a[i];
  for (std::size_t i = 0; i < b.size(); ++i) s[i] += b[i];
  trim(s);
  return s;
}

polynomial difference(const polynomial& a, const polynomial& b) {
  polynomial negative = b.clone();
  for (integer& c : negative) c.negate();
  return sum(a, negative);
}

polynomial mirrored(const polynomial& p) {
  polynomial q = p.clone();
  for (std::size_t k = 1; k < q.size(); k += 2) q[k].negate();
  return q;
}

// For x = m 2^e with e < 0, 2^(-e n) p(x) is the sum of c_k m^k 2^(-e (n - k)).
integer evaluate(const polynomial& p, const dyadic& x, long long& scale) {
  const std::size_t n = p.size() - 1;
  const std::size_t down = x.e < 0 ? static_cast<std::size_t>(-x.e) : 0,
                    up = x.e > 0 ? static_cast<std::size_t>(x.e) : 0;
  scale = -static_cast<long long>(down * n);
  integer v = p[n];
  for (std::size_t k = n; k-- > 0;) {
    v = v * x.m;
    v <<= up;
    if (down == 0)
      v += p[k];
    else
      v += shifted(p[k], down * (n - k));
  }
  return v;
}

int sign_at(const polynomial& p, const dyadic& x) {
  long long scale;
  return evaluate(p, x, scale).sign();
}

int sign_after(const polynomial& p, const dyadic& x) {
  int s = sign_at(p, x);
  if (s != 0) return s;
  for (polynomial d = derivative(p);; d = derivative(d)) {
    s = sign_at(d, x);
    if (s != 0) return s;
  }
}

int sign_before(const polynomial& p, const dyadic& x) {
  int s = sign_at(p, x), turn = 1;
  if (s != 0) return s;
  for (polynomial d = derivative(p);; d = derivative(d)) {
    turn = -turn;
    s = sign_at(d, x);
    if (s != 0) return s * turn;
  }
}

}  // namespace tessarn::analysis
