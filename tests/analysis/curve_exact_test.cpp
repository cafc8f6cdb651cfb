// Zeros, extremes, inflections and extremes of curvature, judged by Sturm's chains in exact rationals.
#include <tessarn/curve.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "../support/random.h"
#include "sturm.h"

#if defined(TESTS_HAVE_GMP)

namespace {

using tessarn::curve_point;
using tessarn::curve_points;
using tessarn::real;
using tessarn::status;
using namespace test;

using coefficients = std::vector<real>;

constexpr double infinite = std::numeric_limits<double>::infinity();

// How often the tests over random input run: 1000 times, or as the environment says.
int rounds() {
  const char* told = std::getenv("TESSARN_ANALYSIS_ROUNDS");
  return told ? std::atoi(told) : 1000;
}

std::string text(const coefficients& p) {
  std::string s;
  for (const real c : p) {
    char number[40];
    std::snprintf(number, sizeof number, "%a ", static_cast<double>(c));
    s += number;
  }
  return s;
}

// The exact polynomial whose zeros are asked for, taken apart.
struct judge {
  rational_polynomial f;
  std::vector<sturm_chain> factors;  // element i: the zeros of multiplicity i + 1

  explicit judge(rational_polynomial p) : f(std::move(p)) {
    for (const rational_polynomial& a : by_multiplicity(f)) factors.emplace_back(a);
  }

  bool asked(std::size_t i, bool only_changes) const { return !only_changes || i % 2 == 0; }

  int count(const place_on_line& a, const place_on_line& b, bool only_changes) const {
    int n = 0;
    for (std::size_t i = 0; i < factors.size(); ++i)
      if (asked(i, only_changes)) n += factors[i].closed(a, b);
    return n;
  }

  // Checks the enclosures, the counts and the multiplicities of all places.
  void check(const curve_points& r, double a, double b, bool only_changes) const {
    ASSERT_EQ(r.state, status::ok);
    ASSERT_EQ(static_cast<int>(r.count), count(a, b, only_changes));
    for (tessarn::ulong i = 0; i < r.count; ++i) {
      const curve_point p = r[i];
      EXPECT_TRUE(p.lower >= a && p.upper <= b);
      EXPECT_TRUE(i == 0 || r[i - 1].upper <= p.lower || (r[i - 1].lower == p.lower && r[i - 1].upper == p.upper));
      ASSERT_LE(p.multiplicity, factors.size());
      const sturm_chain& own = factors[p.multiplicity - 1];
      if (p.lower == p.upper) {
        EXPECT_EQ(own.zero_at(static_cast<double>(p.at)), 1);
        EXPECT_EQ(p.at, p.lower);
        EXPECT_EQ(p.sharing, 1u);
      } else {
        check_enclosed(r, i, only_changes);
      }
      check_change(p, i == 0 || r[i - 1].at != p.at);
    }
  }

  void check_enclosed(const curve_points& r, tessarn::ulong i, bool only_changes) const {
    const curve_point p = r[i];
    const double lower = p.lower, upper = p.upper, at = p.at;
    EXPECT_EQ(std::nextafter(lower, infinite), upper);
    int sharing = 0, equal = 0, at_lower = 0;
    for (std::size_t k = 0; k < factors.size(); ++k)
      if (asked(k, only_changes)) sharing += factors[k].open(lower, upper);
    for (tessarn::ulong k = 0; k < r.count; ++k)
      if (r[k].lower == p.lower && r[k].upper == p.upper && r[k].multiplicity == p.multiplicity) {
        ++equal;
        at_lower += r[k].at == p.lower;
      }
    EXPECT_EQ(static_cast<int>(p.sharing), sharing);
    EXPECT_EQ(factors[p.multiplicity - 1].open(lower, upper), equal);
    if (std::isinf(upper)) {
      EXPECT_EQ(at, lower);
    } else if (std::isinf(lower)) {
      EXPECT_EQ(at, upper);
    } else {
      // Those below the middle have the lower double as the nearest; one at the middle itself has either.
      const place_on_line half(rational((rational(lower) + rational(upper)) / 2));
      const sturm_chain& own = factors[p.multiplicity - 1];
      EXPECT_GE(at_lower, own.open(lower, half));
      EXPECT_LE(at_lower, own.half_open(lower, half));
      EXPECT_TRUE(at == lower || at == upper);
    }
  }

  void check_change(const curve_point& p, bool alone) const {
    EXPECT_EQ(p.change != 0, p.multiplicity % 2 == 1);
    if (p.change == 0 || p.sharing != 1 || !alone || p.lower == p.upper) return;
    const int before = sign_at(f, static_cast<double>(p.lower)), after = sign_at(f, static_cast<double>(p.upper));
    EXPECT_TRUE(before == 0 || before == -p.change);
    EXPECT_TRUE(after == 0 || after == p.change);
  }
};

// A rational nearer to the place than any double by 2^-80 of the distance of its neighbours.
rational narrowed(const rational_polynomial& f, const curve_point& p) {
  rational low(static_cast<double>(p.lower)), high(static_cast<double>(p.upper));
  if (low == high) return low;
  for (int i = 0; i < 80; ++i) {
    rational half = (low + high) / 2;
    const int s = sgn(value_at(f, half));
    if (s == 0) return half;
    (s == p.change ? high : low) = std::move(half);
  }
  return (low + high) / 2;
}

// The value at `at` is p there, correctly rounded, and the value at the place is within the bound.
void check_values(const rational_polynomial& p, const rational_polynomial& f, const curve_points& r) {
  for (tessarn::ulong i = 0; i < r.count; ++i) {
    const curve_point q = r[i];
    if (!std::isfinite(static_cast<double>(q.value))) continue;
    const double value = q.value;
    const rational exact = value_at(p, rational(static_cast<double>(q.at))), off = abs(exact - rational(value));
    for (const double neighbour : {std::nextafter(value, infinite), std::nextafter(value, -infinite)})
      EXPECT_TRUE(std::isinf(neighbour) || off <= abs(exact - rational(neighbour)));
    if (std::isinf(static_cast<double>(q.value_error)) || q.sharing != 1) continue;
    const rational bound(static_cast<double>(q.value_error));
    EXPECT_TRUE(abs(value_at(p, narrowed(f, q)) - rational(value)) <= bound);
  }
}

// The sign of p'' beside a place where the curvature is extreme, and where p'' does not change its sign.
int bend_beside(const rational_polynomial& bend, const rational_polynomial& numerator, const curve_point& q) {
  if (std::isinf(static_cast<double>(q.lower))) return sign_at(bend, static_cast<double>(q.lower));
  if (std::isinf(static_cast<double>(q.upper))) return sign_at(bend, static_cast<double>(q.upper));
  rational low(static_cast<double>(q.lower)), high(static_cast<double>(q.upper));
  if (low == high) {
    if (value_at(bend, low) != 0) return sgn(value_at(bend, low));
    return sgn(value_at(bend, low + (low == 0 ? rational(1) : rational(abs(low))) / rational(mpz_class(1) << 300)));
  }
  const judge changes(bend);
  const int after = sign_at(numerator, place_on_line(high));
  while (changes.count(low, high, true) != 0) {
    rational half = (low + high) / 2;
    (sgn(value_at(numerator, half)) == after ? high : low) = std::move(half);
  }
  return sgn(value_at(bend, low));
}

// Every call for one polynomial and one interval.
void check_all(const coefficients& p, double a, double b, bool curvature) {
  SCOPED_TRACE(text(p) + "on " + std::to_string(a) + " to " + std::to_string(b));
  const rational_polynomial exact = exact_polynomial(p), slope = slope_of(exact), bend = slope_of(slope);
  if (exact.size() > 1) judge(exact).check(tessarn::zeros(p, a, b), a, b, false);
  if (slope.size() > 1) {
    const curve_points e = tessarn::extremes(p, a, b);
    judge(slope).check(e, a, b, true);
    check_values(exact, slope, e);
  }
  if (bend.size() > 1) {
    const curve_points i = tessarn::inflections(p, a, b);
    judge(bend).check(i, a, b, true);
    check_values(exact, bend, i);
  }
  if (!curvature || bend.empty()) return;
  rational_polynomial grown = times(slope, slope);
  grown[0] += 1;
  rational_polynomial three = times(times(slope, bend), bend);
  for (rational& c : three) c *= 3;
  const rational_polynomial numerator = minus(times(slope_of(bend), grown), three);
  curve_points k = tessarn::curvature_extremes(p, a, b);
  for (tessarn::ulong i = 0; i < k.count; ++i) {
    const curve_point q = k[i];
    // The square of the curvature is rational, and so is that of 1 / radius.
    const rational at(static_cast<double>(q.at)), s = value_at(grown, at), t = value_at(bend, at);
    const rational square = t * t / (s * s * s);
    const double curvature_there = q.curvature;
    if (std::fabs(curvature_there) > 1e-150 && std::fabs(curvature_there) < 1e150) {
      EXPECT_TRUE(abs(rational(curvature_there) * rational(curvature_there) / square - 1) <= rational(4e-15));
      EXPECT_EQ(sgn(t), curvature_there > 0 ? 1 : -1);
      EXPECT_EQ(static_cast<double>(q.radius), 1 / std::fabs(curvature_there));
    }
    // The derivative of |k| has the sign of p'' times the numerator, so the two change their signs alike or opposite.
    k.change.getData()[i] = q.change * bend_beside(bend, numerator, q);
  }
  judge(numerator).check(k, a, b, true);  // with the changes of the numerator itself
  check_values(exact, numerator, k);
}

coefficients product_of(const std::vector<double>& zeros, double leading = 1) {
  coefficients p{static_cast<real>(leading)};
  for (const double z : zeros) {
    coefficients next(p.size() + 1);
    for (std::size_t k = 0; k < p.size(); ++k) {
      next[k] -= z * p[k];
      next[k + 1] += p[k];
    }
    p = next;
  }
  return p;
}

coefficients times(const coefficients& a, const coefficients& b) {
  coefficients p(a.size() + b.size() - 1);
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t k = 0; k < b.size(); ++k) p[i + k] += a[i] * b[k];
  return p;
}

// Polynomials by the recurrence p_(k+1) = (a_k x p_k - b_k p_(k-1)) / c_k.
template <class Step>
coefficients recurrence(int degree, Step&& step) {
  coefficients before{1}, p{0, 1};
  for (int k = 1; k < degree; ++k) {
    coefficients next(p.size() + 1);
    const auto [a, b, c] = step(k);
    for (std::size_t i = 0; i < p.size(); ++i) next[i + 1] += a * p[i] / c;
    for (std::size_t i = 0; i < before.size(); ++i) next[i] -= b * before[i] / c;
    before = std::exchange(p, next);
  }
  return p;
}

struct three {
  double a, b, c;
};

TEST(CurveExact, Wilkinson) {
  std::vector<double> zeros;
  for (int i = 1; i <= 20; ++i) zeros.push_back(i);
  const coefficients p = product_of(zeros);
  check_all(p, -infinite, infinite, false);
  check_all(p, 3, 17.5, false);
  coefficients moved = p;  // Wilkinson's change of the coefficient of x^19 makes ten zeros complex
  moved[19] -= 0x1p-23;
  check_all(moved, 0, 30, false);
  EXPECT_EQ(tessarn::zeros(moved, 0, 30).count, 10u);
  zeros.resize(12);  // exact as doubles
  const tessarn::curve_points twelve = tessarn::zeros(product_of(zeros), 1, 12);
  ASSERT_EQ(twelve.count, 12u);
  for (int i = 0; i < 12; ++i) {
    EXPECT_EQ(twelve[i].lower, i + 1);
    EXPECT_EQ(twelve[i].upper, i + 1);
  }
}

// x^n - 2 (a x - 1)^2 has two zeros nearer to each other than neighbouring doubles.
TEST(CurveExact, Mignotte) {
  for (const int n : {5, 8, 10, 17, 30})
    for (const double a : {3.0, 10.0, 1000.0, 0x1p20}) {
      coefficients p(n + 1);
      p[0] = -2;
      p[1] = 4 * a;
      p[2] = -2 * a * a;
      p[n] = 1;
      check_all(p, 0, 1, false);
      check_all(p, -infinite, infinite, false);
    }
  coefficients p(11);
  p[0] = -2;
  p[1] = 4e4;
  p[2] = -2e8;
  p[10] = 1;
  const tessarn::curve_points z = tessarn::zeros(p, 0, 1);
  ASSERT_EQ(z.count, 2u);
  EXPECT_EQ(z[0].lower, z[1].lower);
  EXPECT_EQ(z[0].sharing, 2u);
  EXPECT_EQ(z[0].change, -z[1].change);
}

TEST(CurveExact, ChebyshevAndLegendre) {
  for (const int n : {2, 3, 5, 8, 12, 20}) {
    const coefficients chebyshev = recurrence(n, [](int) { return three{2, 1, 1}; });
    const coefficients legendre = recurrence(n, [](int k) { return three{2.0 * k + 1, 1.0 * k, k + 1.0}; });
    EXPECT_EQ(tessarn::zeros(chebyshev, -1, 1).count, static_cast<tessarn::ulong>(n));
    EXPECT_EQ(tessarn::extremes(chebyshev, -1, 1).count, static_cast<tessarn::ulong>(n - 1));
    check_all(chebyshev, -1, 1, n <= 8);
    check_all(legendre, -1, 1, n <= 8);
    check_all(legendre, 0.25, infinite, false);
  }
}

// The polynomial whose second derivative is the given one times 2520, which makes the coefficients integers up to the
// degree 8.
coefficients integrated_twice(const coefficients& bend) {
  coefficients p(bend.size() + 2);
  for (std::size_t k = 0; k < bend.size(); ++k) p[k + 2] = 2520 / ((k + 1.0) * (k + 2.0)) * bend[k];
  return p;
}

// p'' = (3 x - 1)^2 (x^2 - 2)^2 touches zero at places that are no doubles: the curvature has minima of magnitude 0
// there.
TEST(CurveExact, CurvatureThatTouchesZero) {
  const coefficients factor = times({-1, 3}, {-2, 0, 1}), bend = times(factor, factor);
  coefficients p = integrated_twice(bend);
  check_all(p, -3, 3, true);
  const curve_points k = tessarn::curvature_extremes(p, 0.3, 0.4);
  ASSERT_EQ(k.count, 1u);
  EXPECT_TRUE(k[0].is_minimum());
  for (real& c : p) c = -c;
  EXPECT_TRUE(tessarn::curvature_extremes(p, 0.3, 0.4)[0].is_minimum());
  for (const double sign : {1.0, -1.0}) {  // four times, and with a zero that p'' crosses
    const coefficients square = times({-1, 3}, {-1, 3});
    const coefficients four = integrated_twice(times(times(square, square), {sign}));
    check_all(four, -3, 3, true);
    EXPECT_TRUE(tessarn::curvature_extremes(four, 0.3, 0.4)[0].is_minimum());
    check_all(integrated_twice(times(times(square, square), {-5 * sign, sign})), -3, 6, true);
  }
}

// p'' = x^8 - 2 (a x - 1)^2 changes its sign twice between neighbouring doubles, and between the two places the
// curvature is extreme.
TEST(CurveExact, BendsBetweenNeighbouringDoubles) {
  for (const double odd : {3.0, 5.0}) {
    const double a = odd * 0x1p12;
    const coefficients p = integrated_twice({-2, 4 * a, -2 * a * a, 0, 0, 0, 0, 0, 1});
    const curve_points i = tessarn::inflections(p, 0, 0x1p-10), k = tessarn::curvature_extremes(p, 0, 0x1p-10);
    ASSERT_EQ(i.count, 2u);
    EXPECT_EQ(i[0].sharing, 2u);
    ASSERT_GE(k.count, 1u);
    EXPECT_EQ(k[0].lower, i[0].lower);
    EXPECT_TRUE(k[0].is_maximum());
    check_all(p, 0, 0x1p-10, true);
  }
}

TEST(CurveExact, MultipleZeros) {
  for (const auto& zeros : std::vector<std::vector<double>>{{1, 1},
                                                            {1, 1, 1},
                                                            {1, 1, 2, 2, 3},
                                                            {0, 0, 0, -1},
                                                            {0.5, 0.5, 0.5, 0.25, 0.25, -3},
                                                            {1, 1, 1, 1, 1, 1, 1, 1},
                                                            {2, 2, 2, 2, -2, -2, -2, 5, 5, 7}}) {
    const coefficients p = product_of(zeros);
    check_all(p, -10, 10, true);
    check_all(p, zeros.front(), zeros.back() > zeros.front() ? zeros.back() : zeros.front(), true);
    check_all(times(p, {1, 0, 1}), -10, 10, p.size() < 8);               // with two complex zeros
    check_all(times(times(p, {-2, 0, 1}), {-2, 0, 1}), -10, 10, false);  // and twice the square roots of 2
  }
}

// (x - 1) (k x - k - 1) with k = 2^52 - 1: zeros at 1 and in the second gap above it; and pairs in one gap.
TEST(CurveExact, ZerosInNeighbouringGaps) {
  const double k = 0x1p52 - 1;
  const coefficients p{k + 1, -2 * k - 1, k};
  check_all(p, 0, 2, false);
  check_all(p, 1, 1 + 0x1p-52, false);
  check_all(p, 1 + 0x1p-52, 2, false);
  const tessarn::curve_points z = tessarn::zeros(p, 0, 2);
  ASSERT_EQ(z.count, 2u);
  EXPECT_EQ(z[0].at, 1);
  EXPECT_EQ(z[1].lower, 1 + 0x1p-52);
  EXPECT_EQ(z[1].upper, 1 + 0x1p-51);
}

// Zeros among the subnormal numbers, below the smallest and above the largest double.
TEST(CurveExact, TheEndsOfTheDoubles) {
  check_all({-0x1p-1074, 1}, -1, 1, true);
  check_all({-0x1p-1074, 3}, -1, 1, false);
  check_all({0x1p-1074, 3}, -1, 1, false);
  check_all({-0x1p-1074, 2}, 0, 1, false);  // half of the smallest number
  check_all({3e-320, -4e-160, 1}, 0, 1, false);
  check_all({-1e300, 1}, 0, infinite, false);
  check_all({-1e300, 1e-3}, 0, infinite, false);
  check_all({-1e300, 1e-3, 1e-300}, -infinite, infinite, false);
  check_all({1, -1e-300, 1e-320}, -infinite, infinite, false);
  check_all({-1e308, 0, 0, 1e308}, -infinite, infinite, false);
  check_all({-0x1p-1074, 0, 0, 0x1.fffffffffffffp1023}, -1, 1, false);
  const tessarn::curve_points beyond = tessarn::zeros(coefficients{-1e300, 1e-300}, 0, infinite);
  ASSERT_EQ(beyond.count, 1u);
  EXPECT_EQ(beyond[0].upper, infinite);
  EXPECT_EQ(beyond[0].at, std::numeric_limits<double>::max());
  EXPECT_EQ(tessarn::zeros(coefficients{-1e300, 1e-300}, 0, 1e308).count, 0u);
  EXPECT_EQ(tessarn::zeros(coefficients{1e300, 1e-300}, -infinite, 0)[0].lower, -infinite);
}

// One of many kinds of polynomials that bring the zeros near to each other, to doubles, or to the ends of their range.
coefficients draw(random_source& random) {
  const int degree = 1 + static_cast<int>(random.below(8));
  coefficients p(degree + 1);
  switch (random.below(8)) {
    case 0:
      for (real& c : p) c = random.uniform();
      return p;
    case 1:
      for (real& c : p) c = random.hostile_finite();
      return p;
    case 2:
      for (real& c : p) c = static_cast<double>(random.below(7)) - 3;
      return p;
    case 3: {  // small zeros, many of them multiple
      std::vector<double> zeros(degree);
      for (double& z : zeros) z = (static_cast<double>(random.below(7)) - 3) / 2;
      return product_of(zeros, random.below(2) ? 1 : -4);
    }
    case 4: {  // two fractions whose difference is one part in the product of the denominators
      const double a = 1 + random.below(1 << 26), b = a + 1 + random.below(1 << 26);
      double s = 1, t = 0, u = a, v = b;  // Euclid's algorithm: s a - t b = +-1 when they are coprime
      double s2 = 0, t2 = 1;
      while (u != 0) {
        const double q = std::floor(v / u);
        v = std::exchange(u, v - q * u);
        t2 = std::exchange(t, t2 - q * t);
        s2 = std::exchange(s, s2 - q * s);
      }
      return times({-std::fabs(b), std::fabs(a)}, {-std::fabs(s2), std::fabs(t2)});
    }
    case 5: {  // Mignotte's
      const double a = 1 + random.below(3000);
      p.assign(3 + random.below(6), 0);
      p[0] = -2;
      p[1] = 4 * a;
      p[2] = -2 * a * a;
      p.push_back(random.below(2) ? 1 : -1);
      return p;
    }
    case 6: {  // a cluster
      std::vector<double> zeros(degree);
      for (double& z : zeros) z = 1 + random.below(9) * 0x1p-12;
      return product_of(zeros);
    }
    default: {  // scaled far up or down
      const double scale = std::ldexp(1 + random.below(5), static_cast<int>(random.below(400)) - 200);
      double power = 1;
      for (real& c : p) {
        c = (static_cast<double>(random.below(9)) - 4) * power;
        power *= scale;
        if (!std::isfinite(static_cast<double>(c))) c = 1;
        if (!std::isfinite(power)) power = 1;
      }
      return p;
    }
  }
}

double draw_end(random_source& random) {
  switch (random.below(6)) {
    case 0: return infinite;
    case 1: return static_cast<double>(random.below(4)) / 2;
    case 2: return random.uniform(0, 5);
    case 3: return std::fabs(random.hostile_finite());
    default: return 1e3;
  }
}

TEST(CurveExact, RandomAndHostile) {
  random_source random(20261122);
  for (int i = 0; i < rounds() && !HasFailure(); ++i) {
    const coefficients p = draw(random);
    double a = -draw_end(random), b = draw_end(random);
    if (random.below(4) == 0 && std::isfinite(a)) a = -a;
    if (a > b) std::swap(a, b);
    if (std::isinf(a) && a > 0) a = 0;
    check_all(p, a, b, p.size() < 6);
  }
}

}  // namespace

#endif
