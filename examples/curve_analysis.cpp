#include "curve_analysis.h"

#include <algorithm>
#include <cmath>

namespace example {
namespace {

// The abscissa of a point to be left out, and the result of a search in vain.
constexpr double marker = -1.0;
constexpr double refined = 1e-11;  // of the interval: where searches stop
constexpr int scan_steps = 1000;

void fit_points(binom& p, const std::vector<vector>& points, const fit_options& options) {
  const auto n = static_cast<tessarn::ulong>(points.size());
  if (options.odd) {
    p.createtan(points.data(), n, options.coefficients);
  } else {
    p.create(points.data(), n, options.coefficients);
  }
}

// Fits in u = (x - centre) / width, where |u| is at most 0.5 and so never meets the marker, and
// returns to x. An odd curve may be scaled but not shifted.
void fit_scaled(binom& p, const std::vector<vector>& points, const fit_options& options) {
  const auto [lo, hi] =
      std::minmax_element(points.begin(), points.end(), [](const vector& a, const vector& b) { return a.x < b.x; });
  const double centre = options.odd ? 0 : lo->x + (hi->x - lo->x) / 2;
  const double extent = options.odd ? 2 * std::max(std::fabs(lo->x), std::fabs(hi->x)) : hi->x - lo->x;
  const double width = extent > 0 ? extent : 1;
  std::vector<vector> u;
  u.reserve(points.size());
  for (const vector& v : points) u.emplace_back((v.x - centre) / width, v.y);
  fit_points(p, u, options);
  double power = 1;
  for (unsigned i = 0; i < options.coefficients; ++i, power *= width) {
    const auto k = static_cast<tessarn::slong>(i);
    p.set(k, p.get(k) / power);
  }
  if (centre != 0) p.shift_h(centre);
}

// -1.0 is a result of find_zero only where p changes its sign or vanishes.
bool is_zero_at_marker(const binom& p, const scan& s) {
  if (s.a > marker || s.b < marker) return false;
  const double before = p.func(marker - 100 * s.eps), after = p.func(marker + 100 * s.eps);
  return p.func(marker) == 0 || (before < 0 && after > 0) || (before > 0 && after < 0);
}

}  // namespace

fitted_curve fit(const table& t, const fit_options& options) {
  fitted_curve c;
  c.unknowns = options.odd ? std::min(options.coefficients, options.coefficients / 2 + 1) : options.coefficients;
  for (std::size_t i = 0; i < t.rows(); ++i) {
    if (!options.odd && t.at(i, 0) == marker) {
      ++c.left_out;
      continue;
    }
    c.points.emplace_back(t.at(i, 0), t.at(i, 1));
    c.lines.push_back(t.lines[i]);
  }
  require_rows(t, c.points.size(), c.unknowns, "a curve of " + std::to_string(c.unknowns) + " coefficients");
  if (options.scaled) {
    fit_scaled(c.p, c.points, options);
  } else {
    fit_points(c.p, c.points, options);
  }
  return c;
}

residuals residuals_of(const fitted_curve& c) {
  residuals r;
  for (const vector& v : c.points) {
    r.values.push_back(v.y - c.p.func(v.x));
    r.square_sum += r.values.back() * r.values.back();
  }
  r.rms = std::sqrt(r.square_sum / static_cast<double>(r.values.size()));
  for (std::size_t i = 1; i < r.values.size(); ++i)
    if (std::fabs(r.values[i]) > std::fabs(r.values[r.largest])) r.largest = i;
  return r;
}

bool fit_succeeded(const fitted_curve& c, const residuals& r) {
  double mean = 0;
  for (const vector& v : c.points) mean += v.y;
  mean /= static_cast<double>(c.points.size());
  double around_mean = 0, size = 0;
  for (const vector& v : c.points) {
    around_mean += (v.y - mean) * (v.y - mean);
    size += v.y * v.y;
  }
  // The rounding of the ordinates alone may leave this much.
  const double noise = 1e-20 * size;
  return r.square_sum <= around_mean * (1 + 1e-9) + noise;
}

std::size_t distinct_abscissas(const fitted_curve& c) {
  std::vector<double> x;
  for (const vector& v : c.points) x.push_back(v.x);
  std::sort(x.begin(), x.end());
  return static_cast<std::size_t>(std::unique(x.begin(), x.end()) - x.begin());
}

scan scan_of(double a, double b) {
  const double size = std::max(std::fabs(a), std::fabs(b));
  return {a, b, (b - a) / scan_steps, std::max(refined * (b - a), 4e-16 * size)};
}

std::vector<double> zeros(const binom& p, const scan& s, bool& everywhere) {
  std::vector<double> found;
  everywhere = false;
  // After a zero the scan goes on half a step behind it, so that rounding does not show it twice.
  for (double from = s.a; from <= s.b;) {
    const double x = p.find_zero(from, s.b, s.step, s.eps);
    if (x == marker && (from > marker || !is_zero_at_marker(p, s))) break;
    found.push_back(x);
    everywhere = found.size() >= p.getcofcnt();
    if (everywhere) return {};
    from = x + s.step / 2;
  }
  return found;
}

bool is_straight(const binom& p) {
  for (tessarn::ulong i = 2; i < p.getcofcnt(); ++i)
    if (p.get(static_cast<tessarn::slong>(i)) != 0) return false;
  return true;
}

bool has_circle(const binom& p, double x) { return p.func_2(x) != 0 && std::isfinite(p.normale(x).lenld()); }

std::vector<double> curvature_extremes(const binom& p, const scan& s) {
  std::vector<double> found;
  if (is_straight(p)) return found;
  for (double from = s.a; from < s.b;) {
    const double x = p.find_extrpoint_arc(from, s.b, s.step, s.eps);
    if (x == marker && (from > marker || p.arc_1(marker) != 0)) break;
    found.push_back(x);
    from = x + s.step / 2;
  }
  return found;
}

double sharpest_bend(const binom& p, const scan& s) {
  return is_straight(p) ? marker : p.find_high_hpoint_arc(s.a, s.b, s.step, s.eps);
}

}  // namespace example
