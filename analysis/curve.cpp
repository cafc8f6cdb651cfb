// Zeros, extreme points, inflections and extremes of the curvature: which polynomial vanishes there, and what is told
// of each place.
#include "tessarn/curve.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "analysis/doubled.h"
#include "analysis/isolation.h"

namespace tessarn {

namespace analysis {

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr std::size_t highest_degree = 250;

struct place {
  isolated_zero zero;
  unsigned multiplicity = 1;
  int change = 0;
};

// A polynomial of the caller, 2^exponent times the exact one, and the interval.
struct curve {
  polynomial exact;
  int exponent = 0;
  double a, b;
  status state;

  curve(column_view coefficients, double from, double to) : a(from), b(to), state(check(coefficients, from, to)) {
    if (state == status::ok) exact = exact_coefficients(coefficients, exponent);
  }

 private:
  static status check(column_view coefficients, double a, double b) {
    for (std::size_t k = 0; k < coefficients.size(); ++k)
      if (!is_finite(coefficients[k])) return status::not_finite;
    if (a != a || b != b) return status::not_finite;
    if (a > b || a == infinite || b == -infinite) return status::bad_interval;
    std::size_t size = coefficients.size();
    while (size != 0 && coefficients[size - 1] == 0) --size;
    return size > highest_degree + 1 ? status::too_much_work : status::ok;
  }
};

// How often f vanishes at a zero of its square-free part.
unsigned multiplicity_of(const isolated_zero& z, const multiplicities& m) {
  unsigned count = 1;
  for (std::size_t i = 1; i < m.quotients.size(); ++i) {
    const polynomial& q = m.quotients[i];
    if (z.exact ? sign_at(q, z.low) != 0 : sign_after(q, z.low) == sign_before(q, z.high)) break;
    ++count;
  }
  return count;
}

// The places of a curve, and what they were found with.
struct places_of_curve {
  status state = status::ok;
  multiplicities factors;
  sequence<place> places;
};

// The zeros of f in [a, b], or those alone where it changes its sign.
places_of_curve find(const polynomial& f, const curve& c, bool only_changes, work_allowance& work) {
  places_of_curve found;
  found.state = c.state;
  if (found.state == status::ok && f.empty()) found.state = status::identically_zero;
  if (found.state == status::ok && f.size() > highest_degree + 1) found.state = status::too_much_work;
  if (found.state != status::ok || f.size() == 1) return found;
  found.factors = separate_multiplicities(f.clone(), work);
  sequence<isolated_zero> zeros;
  if (work.enough()) zeros = isolate(found.factors.square_free(), c.a, c.b, work);
  if (!work.enough()) found.state = status::too_much_work;
  for (std::size_t i = 0; i < zeros.size() && found.state == status::ok; ++i) {
    place p;
    p.multiplicity = multiplicity_of(zeros[i], found.factors);
    const bool changes = p.multiplicity % 2 == 1;
    if (only_changes && !changes) continue;
    if (changes) p.change = sign_after(f, zeros[i].low) * (zeros[i].exact ? 1 : -1);
    p.zero = std::move(zeros[i]);
    found.places.push(std::move(p));
  }
  return found;
}

mat<long double> column(ulong n) { return n == 0 ? mat<long double>() : mat<long double>(1u, n); }

// How many places are strictly between the doubles about place i.
ulong sharing(const sequence<place>& places, std::size_t i) {
  const isolated_zero& z = places[i].zero;
  if (z.lower == z.upper) return 1;
  ulong n = 1;
  const auto same = [&](std::size_t k) { return places[k].zero.lower == z.lower && places[k].zero.upper == z.upper; };
  for (std::size_t k = i; k-- > 0 && same(k);) ++n;
  for (std::size_t k = i + 1; k < places.size() && same(k); ++k) ++n;
  return n;
}

curve_points store(const places_of_curve& found) {
  const sequence<place>& places = found.places;
  curve_points r;
  r.state = found.state;
  if (r.state != status::ok) return r;
  const ulong n = static_cast<ulong>(places.size());
  r.count = n;
  for (mat<long double>* c : {&r.lower, &r.upper, &r.at, &r.multiplicity, &r.sharing, &r.change}) *c = column(n);
  for (ulong i = 0; i < n; ++i) {
    const place& p = places[i];
    r.lower.getData()[i] = p.zero.lower;
    r.upper.getData()[i] = p.zero.upper;
    r.at.getData()[i] = p.zero.nearest;
    r.multiplicity.getData()[i] = p.multiplicity;
    r.sharing.getData()[i] = sharing(places, i);
    r.change.getData()[i] = p.change;
  }
  return r;
}

// The largest magnitude that derivative number `order`, 1 or 2, can have up to |x|: the sum of the magnitudes of its
// terms, rounded upwards.
double largest_slope(column_view coefficients, int order, double x) {
  double sum = 0;
  for (std::size_t k = coefficients.size(); k-- > static_cast<std::size_t>(order);) {
    const double factor = order == 1 ? static_cast<double>(k) : static_cast<double>(k) * static_cast<double>(k - 1);
    sum = sum * x + factor * std::fabs(static_cast<double>(coefficients[k]));
  }
  return sum * 1.001;
}

// p at the doubles nearest to the places. The true place is within half of upper - lower, so that p there differs by
// that times the slope at most; at an extreme point the slope vanishes, and half of the square of that times p''
// counts.
void add_values(const curve& c, column_view coefficients, bool flat, curve_points& r) {
  r.value = column(r.count);
  r.value_error = column(r.count);
  for (ulong i = 0; i < r.count; ++i) {
    const double at = r.at.getData()[i], lower = r.lower.getData()[i], upper = r.upper.getData()[i];
    long long scale;
    const integer v = evaluate(c.exact, dyadic(at), scale);
    const double value = rounded(v, scale + c.exponent);
    r.value.getData()[i] = value;
    double error = std::fabs(value) * 0x1p-53;
    if (lower != upper) {  // the distance of neighbouring doubles is not halved before the product, where it may vanish
      const double gap = upper - lower, far = std::max(std::fabs(lower), std::fabs(upper));
      error += flat ? gap * (gap * largest_slope(coefficients, 2, far)) : gap * largest_slope(coefficients, 1, far) / 2;
      error *= 1.001;
    }
    error += 0x1p-1072;  // for what the products above lose as subnormal numbers
    r.value_error.getData()[i] = is_finite(error) ? error : infinite;
  }
}

// The derivative p', p'' or p''' at a double, as fraction 2^exponent with a fraction in [1, 2) or 0.
struct scaled_value {
  double fraction = 0;
  int exponent = 0;

  scaled_value(const polynomial& p, int power, double at) {
    if (p.empty()) return;
    long long scale;
    const integer v = evaluate(p, dyadic(at), scale);
    if (v.sign() == 0) return;
    fraction = rounded(v, 1 - static_cast<long long>(v.bits()));
    exponent = static_cast<int>(scale + power + static_cast<long long>(v.bits()) - 1);
  }
};

// p'' / (1 + p'^2)^(3/2); beside a p' above 2^60 the 1 does not matter.
double curvature(const scaled_value& slope, const scaled_value& bend) {
  if (slope.exponent > 60) {
    const double f = slope.fraction;
    return scaled(bend.fraction / (f < 0 ? -f * f * f : f * f * f), bend.exponent - 3 * slope.exponent);
  }
  const double p = scaled(slope.fraction, slope.exponent), root = std::sqrt(1 + p * p);
  return scaled(bend.fraction / root / root / root, bend.exponent);
}

void add_curvature(const curve& c, const polynomial& slope, const polynomial& bend, curve_points& r) {
  r.curvature = column(r.count);
  r.radius = column(r.count);
  for (ulong i = 0; i < r.count; ++i) {
    const double at = r.at.getData()[i];
    const double k = curvature({slope, c.exponent, at}, {bend, c.exponent, at});
    r.curvature.getData()[i] = k;
    r.radius.getData()[i] = 1 / std::fabs(k);
  }
}

// p''' (1 + p'^2) - 3 p' p''^2 up to a power of two, from the integer coefficients of p 2^-e: the 1 becomes 2^(-2 e).
std::uint64_t cost_of_numerator(const polynomial& p) {
  const std::uint64_t n = p.size(), digits = most_digits(p) + 1;
  return 8 * n * n * digits * digits;
}
polynomial curvature_numerator(const polynomial& slope, const polynomial& bend, int e) {
  const std::size_t up = e > 0 ? 2 * static_cast<std::size_t>(e) : 0,
                    down = e < 0 ? 2 * static_cast<std::size_t>(-e) : 0;
  polynomial one(1);
  one[0] = integer(1);
  one[0] <<= down;
  polynomial square = product(slope, slope), right = product(slope, product(bend, bend));
  for (integer& k : square) k <<= up;
  for (integer& k : right) {
    k <<= up;
    k *= 3;
  }
  return difference(product(derivative(bend), sum(one, square)), right);
}

// The sign of p'' beside a place where the curvature is extreme. Should p'' vanish at the place itself, it does not
// change its sign there, so the part of p'' that changes its sign has no zero at the place, and none in a small
// interval about it.
void turn_by_bend(const polynomial& bend, places_of_curve& found, work_allowance& work) {
  const multiplicities m = separate_multiplicities(bend.clone(), work);
  if (!work.enough()) return;
  const polynomial part = bend.size() > 1 ? changing_part(m) : bend.clone();
  const int turn = part.back().sign() * bend.back().sign();
  for (place& p : found.places) {
    isolated_zero& z = p.zero;
    for (int s = 0; s == 0;) {
      if (!work.spend((most_digits(part) + 64) * part.size() * part.size() * 4)) return;
      s = z.exact ? sign_at(part, z.low) : constant_sign(part, z.low, z.high);
      if (s == 0)
        halve(found.factors.square_free(), z);
      else
        p.change *= s * turn;
    }
  }
}

}  // namespace

}  // namespace analysis

using namespace analysis;

curve_points zeros(column_view coefficients, real a, real b) {
  const curve c(coefficients, a, b);
  work_allowance work;
  return store(find(c.exact, c, false, work));
}

curve_points extremes(column_view coefficients, real a, real b) {
  const curve c(coefficients, a, b);
  work_allowance work;
  curve_points r = store(find(derivative(c.exact), c, true, work));
  add_values(c, coefficients, true, r);
  return r;
}

curve_points inflections(column_view coefficients, real a, real b) {
  const curve c(coefficients, a, b);
  work_allowance work;
  curve_points r = store(find(derivative(derivative(c.exact)), c, true, work));
  add_values(c, coefficients, false, r);
  return r;
}

curve_points curvature_extremes(column_view coefficients, real a, real b) {
  const curve c(coefficients, a, b);
  const polynomial slope = derivative(c.exact), bend = derivative(slope);
  work_allowance work;
  places_of_curve found;
  if (3 * c.exact.size() > highest_degree + 8 || !work.spend(cost_of_numerator(c.exact))) {
    found.state = status::too_much_work;
    return store(found);
  }
  found = find(bend.empty() ? polynomial() : curvature_numerator(slope, bend, c.exponent), c, true, work);
  if (found.state == status::ok) turn_by_bend(bend, found, work);
  if (!work.enough()) found.state = status::too_much_work;
  curve_points r = store(found);
  add_values(c, coefficients, false, r);
  add_curvature(c, slope, bend, r);
  return r;
}

}  // namespace tessarn
