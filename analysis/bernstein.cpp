// Bernstein coefficients: from powers, and by halves.
#include "analysis/bernstein.h"

#include <algorithm>
#include <utility>

namespace tessarn::analysis {

namespace {

// b_k = sum of C(k, i) w_i, as Pascal's triangle adds.
void pascal_sums(bernstein& b) {
  const std::size_t n = b.size() - 1;
  for (std::size_t j = 1; j <= n; ++j)
    for (std::size_t k = n; k >= j; --k) b[k] += b[k - 1];
}

}  // namespace

polynomial weigh(polynomial p) {
  const std::size_t n = p.size() - 1;
  integer factorial(1);
  for (std::size_t k = 0; k <= n; ++k) {  // k! for c_k and for c_(n - k)
    if (k > 0) factorial *= static_cast<std::uint32_t>(k);
    p[k] = p[k] * factorial;
    p[n - k] = p[n - k] * factorial;
  }
  return p;
}

bernstein on_power_of_two(const polynomial& weighted, int k) {
  const std::size_t n = weighted.size() - 1;
  bernstein b = weighted.clone();
  for (std::size_t i = 0; i <= n; ++i)
    b[i] <<= k >= 0 ? static_cast<std::size_t>(k) * i : static_cast<std::size_t>(-k) * (n - i);
  pascal_sums(b);
  return b;
}

// p(2^e (m + w t)), expanded by Horner's scheme about m (the Taylor shift of Shaw and Traub, 1974, in its plain form).
bernstein on_interval(const polynomial& p, const dyadic& low, const dyadic& high) {
  const std::size_t n = p.size() - 1;
  const int e = std::min(low.e, high.e);
  integer m = low.m, w = high.m;
  m <<= static_cast<std::size_t>(low.e - e);
  w <<= static_cast<std::size_t>(high.e - e);
  w -= m;
  polynomial q = p.clone();
  for (std::size_t i = 0; i <= n; ++i)
    q[i] <<= e >= 0 ? static_cast<std::size_t>(e) * i : static_cast<std::size_t>(-e) * (n - i);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t k = n; k-- > i;) q[k] += q[k + 1] * m;
  integer power(1);
  for (std::size_t i = 1; i <= n; ++i) {
    power = power * w;
    q[i] = q[i] * power;
  }
  bernstein b = weigh(std::move(q));
  pascal_sums(b);
  return b;
}

int changes_of_sign(const bernstein& b) noexcept {
  int changes = 0, last = 0;
  for (const integer& c : b) {
    const int s = c.sign();
    if (s == 0) continue;
    if (last != 0 && s != last) ++changes;
    last = s;
  }
  return changes;
}

int first_sign(const bernstein& b) noexcept {
  for (const integer& c : b)
    if (c.sign() != 0) return c.sign();
  return 0;
}

// Sums of neighbours instead of means: the coefficients after j rounds are 2^j times too large, which the shifts level.
bernstein split(bernstein& b) {
  const std::size_t n = b.size() - 1;
  bernstein left(n + 1);
  left[0] = b[0];
  left[0] <<= n;
  for (std::size_t j = 1; j <= n; ++j) {
    for (std::size_t i = 0; i <= n - j; ++i) b[i] += b[i + 1];
    left[j] = b[0];
    left[j] <<= n - j;
  }
  for (std::size_t i = 0; i <= n; ++i) b[i] <<= i;
  return left;
}

}  // namespace tessarn::analysis
