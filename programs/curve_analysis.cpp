#include "curve_analysis.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace program {
namespace {

// The abscissa of a reading that was lost.
constexpr double marker = -1.0;

// The coefficients about the centre, divided by the powers of the scale; it is a power of two, so no digit is lost.
binom about_centre(const tessarn::polynomial_fit& f) {
  binom p;
  p.create(static_cast<tessarn::slong>(f.coefficients.getHeight()));
  double power = 1;
  for (tessarn::ulong i = 0; i < p.size(); ++i, power *= f.scale) p.data()[i] = f.coefficients.getData()[i] / power;
  return p;
}

// The weight of a row, which multiplies its residual: as given, or one over its standard deviation.
double weight(const table& t, std::size_t row, const curve_options& options) {
  const double v = t.at(row, 2), w = options.deviations ? 1 / v : v;
  if (std::isfinite(w) && (options.deviations ? v > 0 : v >= 0)) return w;
  throw input_error(t.file + ":" + std::to_string(t.lines[row]) + ": " + t.names[2] +
                    (options.deviations ? " must be a positive standard deviation" : " must be a weight of 0 or more"));
}

}  // namespace

fitted_curve fit(const table& t, const curve_options& options) {
  fitted_curve c;
  c.unknowns = options.odd ? std::min(options.coefficients, options.coefficients / 2 + 1) : options.coefficients;
  for (std::size_t i = 0; i < t.rows(); ++i) {
    if (!options.odd && t.at(i, 0) == marker) {
      ++c.left_out;
      continue;
    }
    c.points.emplace_back(t.at(i, 0), t.at(i, 1));
    c.lines.push_back(t.lines[i]);
    if (options.weighted || options.deviations) c.weights.push_back(weight(t, i, options));
  }
  require_rows(t, c.points.size(), c.unknowns, "a curve of " + std::to_string(c.unknowns) + " coefficients");
  tessarn::fit_options o;
  if (options.odd) o.which = tessarn::powers::constant_and_odd;
  o.weights = c.weights;
  c.fit = tessarn::fit_polynomial(c.points, options.coefficients, o);
  if (c.fit.state != tessarn::status::ok) return c;
  c.p = about_centre(c.fit);
  for (const vector& v : c.points) c.residuals.push_back(v.y - c.fit.value(v.x));
  // A curve through as many points as it has unknowns meets all of them.
  const auto freedom = static_cast<double>(c.fit.points_used - c.unknowns);
  c.square_sum = freedom > 0 ? c.fit.residual_deviation * c.fit.residual_deviation * freedom : 0;
  return c;
}

std::size_t distinct_abscissas(const fitted_curve& c) {
  std::set<double> x;
  for (const vector& v : c.points) x.insert(v.x);
  return x.size();
}

binom classic_fit(const std::vector<vector>& points, const curve_options& options) {
  binom p;
  const auto n = static_cast<tessarn::ulong>(points.size());
  if (options.odd) {
    p.createtan(points.data(), n, options.coefficients);
  } else {
    p.create(points.data(), n, options.coefficients);
  }
  return p;
}

// Fits in u = (x - centre) / width, where |u| is at most 0.5 and so never meets the marker, and returns to x. An odd
// curve may be scaled but not shifted.
binom classic_scaled_fit(const std::vector<vector>& points, const curve_options& options) {
  const auto [lo, hi] =
      std::minmax_element(points.begin(), points.end(), [](const vector& a, const vector& b) { return a.x < b.x; });
  const double centre = options.odd ? 0 : lo->x + (hi->x - lo->x) / 2;
  const double extent = options.odd ? 2 * std::max(std::fabs(lo->x), std::fabs(hi->x)) : hi->x - lo->x;
  const double width = extent > 0 ? extent : 1;
  std::vector<vector> u;
  u.reserve(points.size());
  for (const vector& v : points) u.emplace_back((v.x - centre) / width, v.y);
  binom p = classic_fit(u, options);
  double power = 1;
  for (unsigned i = 0; i < options.coefficients; ++i, power *= width) {
    const auto k = static_cast<tessarn::slong>(i);
    p.set(k, p.get(k) / power);
  }
  if (centre != 0) p.shift_h(centre);
  return p;
}

}  // namespace program
