// Zeros between powers of two, by halves, until Descartes' rule leaves one for each interval (G. Collins, A. Akritas,
// Polynomial real root isolation using Descartes' rule of signs, 1976; in Bernstein's basis F. Rouillier, P.
// Zimmermann, Efficient isolation of polynomial's real roots, 2004). All numbers are integers, so that every sign is
// exact.
#include "analysis/isolation.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

#include "analysis/bernstein.h"
#include "analysis/doubled.h"
#include "analysis/refinement.h"

namespace tessarn::analysis {

namespace {

// The interval (c 2^e, (c + 1) 2^e), and the polynomial there.
struct node {
  bernstein b;
  integer c;
  int e = 0;
  int changes = 0;
  bool new_end = false;  // whether the left end has not been looked at

  dyadic low() const { return {c, e}; }
  dyadic high() const {
    integer next = c;
    next += integer(1);
    return {std::move(next), e};
  }
};

bool affordable_split(const bernstein& b, work_allowance& work) {
  return work.spend((most_digits(b) + 8) * b.size() * b.size() / 2);
}

// An exponent e such that all positive zeros are below 2^e: twice the largest (|c_k| / c_n)^(1 / (n - k)) of the c_k
// whose sign differs from that of c_n is a bound (J. Kioustelidis, Bounds for positive roots of polynomials, 1986).
int exponent_above_zeros(const polynomial& p) {
  const std::size_t n = p.size() - 1;
  long long largest = std::numeric_limits<int>::min();
  for (std::size_t k = 0; k < n; ++k) {
    if (p[k].sign() * p[n].sign() >= 0) continue;
    const long long ratio = static_cast<long long>(p[k].bits()) - static_cast<long long>(p[n].bits()) + 1;
    const long long degree = static_cast<long long>(n - k);
    largest = std::max(largest, ratio >= 0 ? (ratio + degree - 1) / degree : -(-ratio / degree));
  }
  return static_cast<int>(largest) + 1;
}

class positive_zeros {
 public:
  // The zeros of p in [a, b], where 0 <= a < b; p(0) is not 0.
  positive_zeros(const polynomial& p, double a, double b, work_allowance& work) : a_(a), b_(b), work_(work) {
    bernstein signs = p.clone();
    if (changes_of_sign(signs) == 0) return;
    int top = exponent_above_zeros(p);
    if (is_finite(b)) top = std::min(top, exponent_of(b) + 1);
    cut_at_powers_of_two(weigh(std::move(signs)), top);
    while (!open_.empty() && work_.enough()) visit(open_.pop());
  }

  sequence<isolated_zero> found;

 private:
  // Cuts (0, 2^k) into (0, 2^(k-1)) and the rest, again and again, until at most one zero is left at the low end. Where
  // no change of sign is lost on the way, k goes down by larger and larger steps: no zero is passed then.
  void cut_at_powers_of_two(const polynomial& weighted, int k) {
    const auto at = [&](int exponent) {
      node t;
      if (!work_.spend(
              (most_digits(weighted) + 8 + weighted.size() * static_cast<std::size_t>(std::abs(exponent)) / 32) *
              weighted.size() * weighted.size()))
        return t;
      t.b = on_power_of_two(weighted, exponent);
      t.e = exponent;
      t.changes = changes_of_sign(t.b);
      return t;
    };
    node n = at(k);
    for (int idle = 0, step = 8; n.changes > 1 && power_above_start(n.e);) {
      if (idle >= 4) {
        node trial = at(n.e - step);
        if (!work_.enough()) return;
        const bool same = trial.changes == n.changes;
        if (same) n = std::move(trial);
        step = same ? std::min(2 * step, 1024) : step / 2;
        if (step >= 4) continue;
        idle = 0;
        step = 8;
      }
      const int before = n.changes;
      if (!divide(n)) return;
      idle = n.changes == before ? idle + 1 : 0;
    }
    if (n.changes > 0) open_.push(std::move(n));
  }

  // Whether a part of (0, 2^e) is not below a.
  bool power_above_start(int e) const { return a_ == 0 || e > exponent_of(a_); }

  // Makes n its left half, and puts the right half on the list where it can have a zero.
  bool divide(node& n) {
    if (!affordable_split(n.b, work_)) return false;
    node right;
    bernstein left = split(n.b);
    right.b = std::exchange(n.b, std::move(left));
    right.changes = changes_of_sign(right.b);
    n.changes = changes_of_sign(n.b);
    n.c <<= 1;
    right.c = n.c;
    right.c += integer(1);
    right.e = --n.e;
    right.new_end = true;
    if (right.changes > 0 || right.b[0].sign() == 0) open_.push(std::move(right));
    return true;
  }

  // The lists are worked off from the left, and a zero at the left end of an interval comes before those inside.
  void visit(node n) {
    if (n.new_end && n.b[0].sign() == 0) {
      isolated_zero z;
      z.low = n.low();
      z.high = n.low();
      z.exact = true;
      found.push(std::move(z));
    }
    n.new_end = false;
    if (n.changes == 0 || outside(n)) return;
    if (n.changes == 1) {
      isolated_zero z;
      z.low = n.low();
      z.high = n.high();
      found.push(std::move(z));
      return;
    }
    if (!divide(n)) return;
    open_.push(std::move(n));
  }

  bool outside(const node& n) const {
    return (a_ > 0 && compare(n.high(), dyadic(a_)) <= 0) || (is_finite(b_) && compare(n.low(), dyadic(b_)) >= 0);
  }

  double a_, b_;
  work_allowance& work_;
  sequence<node> open_;
};

// About the most that refining a zero costs: 80 signs at doubles, each by one product for each coefficient.
std::uint64_t cost_of_refining(const polynomial& p, const isolated_zero& z) {
  const std::uint64_t n = p.size(), exponent = static_cast<std::uint64_t>(std::abs(z.high.e)) + 64;
  return 80 * n * (most_digits(p) + n * exponent / 32);
}

void add_positive(const polynomial& p, double a, double b, bool mirror, work_allowance& work,
                  sequence<isolated_zero>& zeros) {
  positive_zeros side(p, a, b, work);
  if (!work.enough()) return;
  const refinement refine(p);
  for (std::size_t i = 0; i < side.found.size(); ++i) {
    isolated_zero& z = side.found[mirror ? side.found.size() - 1 - i : i];
    if (!work.spend(cost_of_refining(p, z))) return;
    refine(z);
    if (z.lower < a || z.upper > b) continue;
    if (mirror) z.mirror();
    zeros.push(std::move(z));
  }
}

}  // namespace

void isolated_zero::mirror() noexcept {
  std::swap(low, high);
  low.m.negate();
  high.m.negate();
  const double above = upper;
  upper = 0 - lower;  // never -0
  lower = 0 - above;
  nearest = 0 - nearest;
}

sequence<isolated_zero> isolate(const polynomial& square_free, double a, double b, work_allowance& work) {
  sequence<isolated_zero> zeros;
  const bool at_origin = square_free[0].sign() == 0;
  polynomial p(square_free.size() - (at_origin ? 1 : 0));  // without the zero at 0
  for (std::size_t k = 0; k < p.size(); ++k) p[k] = square_free[k + (at_origin ? 1 : 0)];
  if (a < 0) add_positive(mirrored(p), b < 0 ? -b : 0, -a, true, work, zeros);
  if (at_origin && a <= 0 && b >= 0) {
    isolated_zero z;
    z.exact = true;
    zeros.push(std::move(z));
  }
  if (b > 0) add_positive(p, a > 0 ? a : 0, b, false, work, zeros);
  return zeros;
}

void halve(const polynomial& square_free, isolated_zero& z) {
  dyadic mid = middle(z.low, z.high);
  const int s = sign_at(square_free, mid);
  if (s == 0) {
    z.low = mid;
    z.high = std::move(mid);
    z.exact = true;
  } else if (s == sign_after(square_free, z.low)) {
    z.low = std::move(mid);
  } else {
    z.high = std::move(mid);
  }
}

int constant_sign(const polynomial& p, const dyadic& low, const dyadic& high) {
  const bernstein b = on_interval(p, low, high);
  return changes_of_sign(b) == 0 ? first_sign(b) : 0;
}

}  // namespace tessarn::analysis
