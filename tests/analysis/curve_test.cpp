// The statuses of the calls about curves, the places they tell of, and the integers they compute with.
#include <tessarn/curve.h>
#include <tessarn/fit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "../support/random.h"
#include "analysis/isolation.h"
#include "rational.h"

namespace {

using tessarn::curve_points;
using tessarn::real;
using tessarn::status;
using coefficients = std::vector<real>;

constexpr double infinite = std::numeric_limits<double>::infinity();

using call = curve_points (*)(tessarn::column_view, real, real);
constexpr call all_calls[] = {tessarn::zeros, tessarn::extremes, tessarn::inflections, tessarn::curvature_extremes};

void expect_no_places(const curve_points& r, status s) {
  EXPECT_EQ(r.state, s);
  EXPECT_EQ(r.count, 0u);
  for (const auto* column : {&r.lower, &r.upper, &r.at, &r.multiplicity, &r.sharing, &r.change, &r.value,
                             &r.value_error, &r.curvature, &r.radius})
    EXPECT_EQ(column->getHeight(), 0u);
}

TEST(Curve, StatusesOneByOne) {
  const coefficients p{-1, 0, 1, 1, 0, 2};
  for (const call f : all_calls) {
    EXPECT_EQ(f(p, -2, 2).state, status::ok);
    for (const double bad : {infinite, -infinite, std::nan("")})
      for (std::size_t k = 0; k < p.size(); ++k) {
        coefficients q = p;
        q[k] = bad;
        expect_no_places(f(q, -2, 2), status::not_finite);
      }
    expect_no_places(f(p, std::nan(""), 2), status::not_finite);
    expect_no_places(f(p, -2, std::nan("")), status::not_finite);
    expect_no_places(f(p, 2, -2), status::bad_interval);
    expect_no_places(f(p, infinite, infinite), status::bad_interval);
    expect_no_places(f(p, -infinite, -infinite), status::bad_interval);
    expect_no_places(f({}, -2, 2), status::identically_zero);
    expect_no_places(f(binom(), -2, 2), status::identically_zero);
    expect_no_places(f(coefficients{0, -0.0, 0}, -2, 2), status::identically_zero);
    expect_no_places(f(coefficients(252, 1), -2, 2), status::too_much_work);
  }
}

TEST(Curve, LowDegrees) {
  const coefficients constant{5}, line{1, 2}, parabola{0, 0, 2}, cubic{0, 1, 0, 1};
  expect_no_places(tessarn::zeros(constant, -9, 9), status::ok);
  expect_no_places(tessarn::extremes(constant, -9, 9), status::identically_zero);
  expect_no_places(tessarn::extremes(line, -9, 9), status::ok);
  expect_no_places(tessarn::inflections(line, -9, 9), status::identically_zero);
  expect_no_places(tessarn::inflections(parabola, -9, 9), status::ok);
  expect_no_places(tessarn::curvature_extremes(constant, -9, 9), status::identically_zero);
  expect_no_places(tessarn::curvature_extremes(line, -9, 9), status::identically_zero);
  EXPECT_EQ(tessarn::curvature_extremes(parabola, -9, 9).count, 1u);
  EXPECT_EQ(tessarn::curvature_extremes(cubic, -9, 9).count, 2u);
  EXPECT_EQ(tessarn::zeros(line, -9, 9)[0].at, -0.5);
}

TEST(Curve, LeadingZerosDoNotCount) {
  coefficients p{-2, 0, 1};
  p.resize(1000);
  const curve_points z = tessarn::zeros(p, -infinite, infinite);
  ASSERT_EQ(z.count, 2u);
  EXPECT_EQ(z[1].at, std::sqrt(2.0));
  EXPECT_EQ(tessarn::extremes(p, -1, 1).count, 1u);
}

TEST(Curve, WorkHasAnEnd) {
  test::random_source random(3);
  coefficients p;  // of far apart magnitudes, and of high degree
  for (int i = 0; i <= 250; ++i) p.push_back(std::ldexp(random.uniform(), static_cast<int>(random.below(2000)) - 1000));
  expect_no_places(tessarn::zeros(p, -infinite, infinite), status::too_much_work);
  expect_no_places(tessarn::extremes(p, -infinite, infinite), status::too_much_work);
  expect_no_places(tessarn::curvature_extremes(p, -infinite, infinite), status::too_much_work);
  p.resize(86);  // the degree 85: the numerator has the degree 250
  for (real& c : p) c = random.uniform();
  EXPECT_EQ(tessarn::curvature_extremes(p, -1, 1).state, status::ok);
  p.push_back(1);
  expect_no_places(tessarn::curvature_extremes(p, -1, 1), status::too_much_work);
  EXPECT_EQ(tessarn::extremes(p, -1, 1).state, status::ok);
  // The square of a polynomial of degree 100 has a common divisor with its derivative that is too long.
  coefficients q(201);
  for (int i = 0; i <= 100; ++i)
    for (int k = 0; k <= 100; ++k) q[i + k] += (i * i % 17 - 8.0) * (k * k % 17 - 8.0);
  expect_no_places(tessarn::zeros(q, -1, 1), status::too_much_work);
}

// The ends of the interval belong to it, but are no extreme points for being ends.
TEST(Curve, EndsOfTheInterval) {
  const binom p{-6, 11, -6, 1};  // zeros at 1, 2, 3
  EXPECT_EQ(tessarn::zeros(p, 1, 3).count, 3u);
  EXPECT_EQ(tessarn::zeros(p, 1, 1).count, 1u);
  EXPECT_EQ(tessarn::zeros(p, 1.5, 1.5).count, 0u);
  EXPECT_EQ(tessarn::zeros(p, std::nextafter(1.0, 2.0), 3).count, 2u);
  EXPECT_EQ(tessarn::zeros(p, 1, std::nextafter(3.0, 2.0)).count, 2u);
  EXPECT_EQ(tessarn::zeros(p, -infinite, 2).count, 2u);
  EXPECT_EQ(tessarn::zeros(p, 2, infinite).count, 2u);
  EXPECT_EQ(tessarn::extremes(p, 2, 2.5).count, 0u);
  const binom line{0, 1}, square{0, 0, 1};
  EXPECT_EQ(tessarn::zeros(line, -0.0, -0.0).count, 1u);
  EXPECT_EQ(tessarn::zeros(line, 0, 5)[0].at, 0);
  EXPECT_EQ(tessarn::zeros(line, -5, 0).count, 1u);
  EXPECT_EQ(tessarn::extremes(square, 0, 5).count, 1u);  // p' changes its sign at this very end
  EXPECT_EQ(tessarn::extremes(square, 1, 5).count, 0u);
  // A zero between two doubles is in an interval that holds both of them, and in no smaller one.
  const binom root{-2, 0, 1};
  const double above = std::sqrt(2.0), below = std::nextafter(above, 0);
  EXPECT_EQ(tessarn::zeros(root, below, above).count, 1u);
  EXPECT_EQ(tessarn::zeros(root, above, 2).count, 0u);
  EXPECT_EQ(tessarn::zeros(root, 0, below).count, 0u);
}

TEST(Curve, ZeroIsNeverNegativeZero) {
  const curve_points tiny = tessarn::zeros(coefficients{0x1p-1074, 4}, -1, 1),
                     zero = tessarn::zeros(binom{-0.0, -1}, -1, 1);
  ASSERT_EQ(tiny.count, 1u);
  EXPECT_EQ(tiny[0].lower, -0x1p-1074);
  for (const real v : {tiny[0].upper, tiny[0].at, zero[0].lower, zero[0].upper, zero[0].at}) {
    EXPECT_EQ(v, 0);
    EXPECT_FALSE(std::signbit(v));
  }
}

TEST(Curve, KindsOfPlaces) {
  const curve_points e = tessarn::extremes(binom{0, 0, -2, 0, 1}, -2, 2);  // x^4 - 2 x^2
  ASSERT_EQ(e.count, 3u);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(e[i].at, i - 1);
    EXPECT_EQ(e[i].value, i == 1 ? 0 : -1);
    EXPECT_EQ(e[i].is_maximum(), i == 1);
    EXPECT_EQ(e[i].is_minimum(), i != 1);
  }
  const curve_points flat = tessarn::extremes(binom{3, 0, 0, 0, 1}, -2, 2);  // x^4 + 3
  ASSERT_EQ(flat.count, 1u);
  EXPECT_EQ(flat[0].multiplicity, 3u);
  EXPECT_TRUE(flat[0].is_minimum());
  // The curvature of x^4 touches 0 at the origin and has a maximum at each side.
  const curve_points k = tessarn::curvature_extremes(binom{0, 0, 0, 0, 1}, -2, 2);
  ASSERT_EQ(k.count, 3u);
  EXPECT_TRUE(k[0].is_maximum() && k[1].is_minimum() && k[2].is_maximum());
  EXPECT_EQ(k[1].curvature, 0);
  EXPECT_EQ(k[1].radius, infinite);
  EXPECT_EQ(k[0].curvature, k[2].curvature);
  // Of a curve that bends to the right the sharpest place is a maximum, too.
  const curve_points turned = tessarn::curvature_extremes(binom{0, 0, -2}, -1, 1);
  ASSERT_EQ(turned.count, 1u);
  EXPECT_TRUE(turned[0].is_maximum());
  EXPECT_EQ(turned[0].curvature, -4);
  EXPECT_EQ(turned[0].radius, 0.25);
}

// Slopes and curvatures far beyond what 1 + p'^2 could hold.
TEST(Curve, CurvatureOfSteepCurves) {
  const curve_points k = tessarn::curvature_extremes(binom{0, 1e200, 0, 1}, -1, 1);
  for (tessarn::ulong i = 0; i < k.count; ++i) EXPECT_TRUE(std::isfinite(static_cast<double>(k[i].curvature)));
  const curve_points sharp = tessarn::curvature_extremes(binom{0, 0, 1e300}, -1, 1);
  ASSERT_EQ(sharp.count, 1u);
  EXPECT_EQ(sharp[0].curvature, 2e300);
  EXPECT_EQ(tessarn::curvature_extremes(binom{0, 0, 1e308}, -1, 1)[0].curvature, infinite);
  EXPECT_EQ(tessarn::curvature_extremes(binom{0, 0, 1e308}, -1, 1)[0].radius, 0);
}

// Where the 1 of 1 + p'^2 does not matter, 2^450 p has the curvature of p divided by 2^900.
TEST(Curve, CurvatureOfVerySteepCurves) {
  const curve_points k = tessarn::curvature_extremes(binom{0, 0x1p70, 0, 0x1p520}, 0, 1),
                     steeper = tessarn::curvature_extremes(binom{0, 0x1p520, 0, 0x1p970}, 0, 1);
  ASSERT_EQ(k.count, 1u);
  ASSERT_EQ(steeper.count, 1u);
  EXPECT_EQ(steeper[0].at, k[0].at);
  EXPECT_GT(k[0].curvature, 0);
  EXPECT_EQ(steeper[0].curvature, k[0].curvature * 0x1p-900);
}

TEST(Curve, TakesWhatTheCallerHas) {
  const real numbers[] = {-6, 9, 11, 9, -6, 9, 1, 9};
  EXPECT_EQ(tessarn::zeros({numbers, 4, 2 * sizeof(real)}, 0, 9).count, 3u);
  const mat<long double> column{{-6}, {11}, {-6}, {1}};
  EXPECT_EQ(tessarn::zeros(column, 0, 9).count, 3u);
  const vector points[] = {{0, 1}, {1, 0}, {2, 3}, {3, 10}};  // 1 - 3 x + 2 x^2
  EXPECT_EQ(tessarn::zeros(tessarn::fit_polynomial({points, 4}, 3).of_powers, 0, 9).count, 2u);
}

using tessarn::analysis::integer;

tessarn::analysis::polynomial linear(std::uint64_t slope, std::uint64_t minus) {
  tessarn::analysis::polynomial p(2);
  p[0] = integer(minus);
  p[0].negate();
  p[1] = integer(slope);
  return p;
}

// (p x - 1)^2 (x - 2) is x - 2 modulo the prime p = 2^31 - 1, by which common divisors are looked for first.
TEST(CurveMultiplicities, APrimeThatDividesTheLeadingCoefficient) {
  using namespace tessarn::analysis;
  const polynomial twice = linear(2147483647, 1);
  work_allowance work;
  const multiplicities m = separate_multiplicities(product(product(twice, twice), linear(1, 2)), work);
  ASSERT_EQ(m.quotients.size(), 2u);
  EXPECT_EQ(m.quotients[0].size(), 3u);
  EXPECT_EQ(m.quotients[1].size(), 2u);
  EXPECT_TRUE(work.enough());
}

// Zeros at sixteenths of the smallest double t, some of which are found exactly. The nearest double of a tie is the
// even one.
TEST(CurveRefinement, NearestDoubleOfZerosBetweenDoubles) {
  using namespace tessarn::analysis;
  const unsigned sixteenths[] = {4, 8, 11, 12, 13, 24, 40};
  polynomial p = linear(1, 0);
  for (const unsigned at : sixteenths) {
    polynomial factor = linear(1, at);
    factor[1] <<= 1078;
    p = product(p, factor);
  }
  work_allowance work;
  const sequence<isolated_zero> zeros = isolate(p, 0, 1, work);
  ASSERT_EQ(zeros.size(), 8u);
  const double t = 0x1p-1074, lower[] = {0, 0, 0, 0, 0, 0, t, 2 * t}, nearest[] = {0, 0, 0, t, t, t, 2 * t, 2 * t};
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(zeros[i].lower, lower[i]);
    EXPECT_EQ(zeros[i].upper, i == 0 ? 0 : lower[i] + t);
    EXPECT_EQ(zeros[i].nearest, nearest[i]) << i;
  }
  EXPECT_TRUE(zeros[4].exact);  // at 3/4 t, where an interval was cut
}

#if defined(TESTS_HAVE_GMP)

integer drawn(test::random_source& random, mpz_class& judge) {
  integer v;
  judge = 0;
  for (std::uint32_t i = random.below(7); i > 0; --i) {
    // Digits of zeros and ones bring the carries.
    const std::uint32_t digit = random.below(3) == 0   ? static_cast<std::uint32_t>(random.next())
                                : random.below(2) == 0 ? 0xFFFFFFFFu
                                                       : 0u;
    v <<= 32;
    v += integer(digit);
    judge = (judge << 32) + digit;
  }
  if (random.below(2) == 0) {
    v.negate();
    judge = -judge;
  }
  return v;
}

mpz_class value_of(integer v) {
  mpz_class z = 0;
  const bool negative = v.sign() < 0;
  if (negative) v.negate();
  for (mp_bitcnt_t at = 0; v.sign() != 0; at += 16, v >>= 16) z += mpz_class(mpz_class(v.modulo(1u << 16)) << at);
  return negative ? mpz_class(-z) : z;
}

TEST(CurveIntegers, AgreeWithGmp) {
  test::random_source random(7);
  for (int i = 0; i < 20000 && !HasFailure(); ++i) {
    mpz_class x, y;
    const integer a = drawn(random, x), b = drawn(random, y);
    integer s = a, d = a, t = a, u = a;
    s += b;
    d -= b;
    t *= static_cast<std::uint32_t>(i) * 2654435761u;
    const unsigned count = random.below(100);
    u <<= count;
    EXPECT_TRUE(value_of(a) == x);
    EXPECT_TRUE(value_of(s) == x + y);
    EXPECT_TRUE(value_of(d) == x - y);
    EXPECT_TRUE(value_of(t) == x * mpz_class(static_cast<std::uint32_t>(i) * 2654435761u));
    EXPECT_TRUE(value_of(u) == mpz_class(x << count));
    EXPECT_TRUE(value_of(a * b) == x * y);
    EXPECT_EQ(a.sign(), sgn(x));
    EXPECT_EQ(a.bits(), x == 0 ? 0 : mpz_sizeinbase(x.get_mpz_t(), 2));
    EXPECT_EQ(a.low_zeros(), x == 0 ? 0 : mpz_scan1(x.get_mpz_t(), 0));
    const mpz_class residue = ((x % 2147483647) + 2147483647) % 2147483647;
    EXPECT_EQ(a.modulo(2147483647), residue.get_ui());
    EXPECT_TRUE(y == 0 || value_of(exact_quotient(a * b, b)) == x);
  }
}

// Rounding to the nearest double, ties to even, also to subnormal numbers and to infinity.
TEST(CurveIntegers, RoundToTheNearestDouble) {
  test::random_source random(8);
  for (int i = 0; i < 20000 && !HasFailure(); ++i) {
    mpz_class x;
    integer a = drawn(random, x);
    if (random.below(2) == 0) {  // a tie, or nearly one
      const std::uint64_t odd = (random.next() >> 11 | std::uint64_t{1} << 52) * 2 + 1;
      const unsigned shift = 1 + random.below(100), more = random.below(2);
      a = integer(odd);
      a <<= shift;
      a += integer(more);
      x = static_cast<std::uint32_t>(odd >> 32);
      x = (x << 32) + static_cast<std::uint32_t>(odd);
      x = (x << shift) + more;
    }
    // From the whole range, or where the results become subnormal.
    const int e = random.below(2) == 0 ? static_cast<int>(random.below(2400)) - 1300
                                       : -1020 - static_cast<int>(a.bits()) - static_cast<int>(random.below(60));
    const double r = tessarn::analysis::rounded(a, e);
    test::rational exact(x);
    if (e >= 0)
      exact *= mpz_class(mpz_class(1) << e);
    else
      exact /= mpz_class(mpz_class(1) << -e);
    const test::rational limit = test::rational(std::numeric_limits<double>::max()) + test::rational(0x1p970);
    if (std::isinf(r)) {
      EXPECT_TRUE(abs(exact) >= limit);
      continue;
    }
    EXPECT_TRUE(abs(exact) < limit);
    const test::rational off = abs(exact - test::rational(r));
    for (const double neighbour : {std::nextafter(r, infinite), std::nextafter(r, -infinite)}) {
      if (std::isinf(neighbour)) continue;
      const test::rational other = abs(exact - test::rational(neighbour));
      std::uint64_t bits;
      std::memcpy(&bits, &r, sizeof bits);
      EXPECT_TRUE(off < other || (off == other && bits % 2 == 0)) << r;
    }
  }
}

#endif

}  // namespace
