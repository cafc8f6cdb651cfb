// Common divisors of polynomials, and with them the multiplicities of zeros.
//
// Most polynomials have no multiple zero, and their residues modulo a prime show it at once: a common divisor of f and
// f' would be one of the residues, too, unless the prime divides the leading coefficient. Otherwise the divisor is
// found by the subresultant chain (G. Collins, Subresultants and reduced polynomial remainder sequences, 1967; W.
// Brown, J. Traub, On Euclid's algorithm and the theory of subresultants, 1971), whose coefficients stay short.
#include <algorithm>
#include <utility>

#include "analysis/exact_polynomial.h"

namespace tessarn::analysis {

namespace {

constexpr std::uint32_t prime = 2147483647;  // 2^31 - 1

std::uint32_t times(std::uint32_t a, std::uint32_t b) noexcept {
  return static_cast<std::uint32_t>(std::uint64_t{a} * b % prime);
}

// a^(prime - 2), the inverse modulo the prime.
std::uint32_t inverse(std::uint32_t a) noexcept {
  std::uint32_t power = 1;
  for (std::uint32_t e = prime - 2; e != 0; e /= 2) {
    if (e % 2 == 1) power = times(power, a);
    a = times(a, a);
  }
  return power;
}

sequence<std::uint32_t> residues(const polynomial& p) {
  sequence<std::uint32_t> r(p.size());
  for (std::size_t k = 0; k < p.size(); ++k) r[k] = p[k].modulo(prime);
  while (!r.empty() && r.back() == 0) r.shorten(r.size() - 1);
  return r;
}

// Whether the residues prove that two polynomials have no common divisor but constants.
bool proved_coprime(const polynomial& f, const polynomial& g) {
  sequence<std::uint32_t> a = residues(f), b = residues(g);
  if (a.size() != f.size()) return false;
  while (b.size() > 1) {
    const std::uint32_t reciprocal = inverse(b.back());
    while (a.size() >= b.size()) {
      const std::uint32_t factor = prime - times(a.back(), reciprocal);
      const std::size_t shift = a.size() - b.size();
      for (std::size_t k = 0; k < b.size(); ++k)
        a[shift + k] = static_cast<std::uint32_t>((std::uint64_t{factor} * b[k] + a[shift + k]) % prime);
      while (!a.empty() && a.back() == 0) a.shorten(a.size() - 1);
    }
    std::swap(a, b);
  }
  return b.size() == 1;
}

integer power(const integer& v, std::size_t e) {
  integer p(1);
  for (std::size_t i = 0; i < e; ++i) p = p * v;
  return p;
}

// The remainder of b's leading coefficient to the power deg a - deg b + 1, times a, divided by b.
polynomial pseudo_remainder(polynomial a, const polynomial& b) {
  const integer& leading = b.back();
  for (std::size_t steps = a.size() - b.size() + 1; steps-- > 0;) {
    // The coefficient at this place may have become 0 before; the step then only multiplies.
    const std::size_t top = b.size() - 1 + steps;
    const integer factor = top < a.size() ? a[top] : integer();
    for (std::size_t k = 0; k < a.size(); ++k) a[k] = a[k] * leading;
    if (factor.sign() != 0)
      for (std::size_t k = 0; k < b.size(); ++k) a[steps + k] -= factor * b[k];
  }
  trim(a);
  return a;
}

void strip_powers_of_two(polynomial& p) noexcept {
  std::size_t zeros = static_cast<std::size_t>(-1);
  for (const integer& c : p)
    if (c.sign() != 0) zeros = std::min(zeros, c.low_zeros());
  for (integer& c : p)
    if (c.sign() != 0) c >>= zeros;
}

// A divisor d of f as short as f: its coefficients times lc(f) / lc(d).
void shorten(polynomial& d, const polynomial& f) {
  const integer leading = d.back();
  for (integer& c : d) c = exact_quotient(c * f.back(), leading);
  strip_powers_of_two(d);
}

// The greatest common divisor of f and g, where deg f >= deg g, up to a constant factor.
polynomial common_divisor(const polynomial& f, const polynomial& g) {
  polynomial a = f.clone(), b = g.clone();
  integer leading(1), height(1);
  while (b.size() > 1) {
    const std::size_t drop = a.size() - b.size();
    polynomial r = pseudo_remainder(std::move(a), b);
    if (r.empty()) {
      shorten(b, f);
      return b;
    }
    const integer divisor = leading * power(height, drop);
    for (integer& c : r) c = exact_quotient(std::move(c), divisor);
    leading = b.back();
    if (drop == 1) height = leading;
    if (drop > 1) height = exact_quotient(power(leading, drop), power(height, drop - 1));
    a = std::move(b);
    b = std::move(r);
  }
  polynomial one(1);
  one[0] = integer(1);
  return one;
}

// lc(f) f / g up to powers of two, where g divides f and came from shorten(): the coefficients are integers then.
polynomial quotient(const polynomial& f, const polynomial& g) {
  polynomial rest = f.clone();
  for (integer& c : rest) c = c * f.back();
  polynomial q(f.size() - g.size() + 1);
  for (std::size_t k = q.size(); k-- > 0;) {
    q[k] = exact_quotient(rest[k + g.size() - 1], g.back());
    if (q[k].sign() == 0) continue;
    for (std::size_t i = 0; i < g.size(); ++i) rest[k + i] -= q[k] * g[i];
  }
  strip_powers_of_two(q);
  return q;
}

// The most that the subresultant chain of f and f' costs: about n^2 / 2 steps, each with two products and a quotient of
// numbers of up to 2 n times the digits of a coefficient.
std::uint64_t cost_of_divisor(const polynomial& f) {
  const std::uint64_t n = f.size(), digits = 2 * n * (most_digits(f) + 1);
  return n * n * digits * digits / 2;
}

}  // namespace

multiplicities separate_multiplicities(polynomial f, work_allowance& work) {
  multiplicities m;
  while (f.size() > 1) {
    const polynomial slope = derivative(f);
    if (!work.spend(f.size() * (f.size() + most_digits(f)) * 4)) return {};
    if (proved_coprime(f, slope)) {
      m.quotients.push(std::move(f));
      return m;
    }
    if (!work.spend(cost_of_divisor(f))) return {};
    polynomial divisor = common_divisor(f, slope);
    m.quotients.push(quotient(f, divisor));
    f = std::move(divisor);
  }
  return m;
}

// Zeros of multiplicity exactly i + 1 are those of s_i / s_(i+1).
polynomial changing_part(const multiplicities& m) {
  polynomial part(1);
  part[0] = integer(1);
  for (std::size_t i = 0; i < m.quotients.size(); i += 2) {
    if (i + 1 == m.quotients.size()) {
      part = product(part, m.quotients[i]);
      continue;
    }
    polynomial next = m.quotients[i + 1].clone();
    shorten(next, m.quotients[i]);
    part = product(part, quotient(m.quotients[i], next));
  }
  return part;
}

}  // namespace tessarn::analysis
