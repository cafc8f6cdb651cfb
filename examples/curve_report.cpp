// Fits a polynomial through measured points and reports what the curve is like: coefficients,
// residuals, zeros, extremes, curvature; with a picture on demand.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

#include "curve_analysis.h"
#include "curve_plot.h"
#include "support/report.h"

namespace {

using namespace example;

struct options {
  std::string file;
  fit_options fit;
  std::vector<double> at;
  std::vector<double> range;
  std::string certified;
  std::optional<double> certified_square_sum;
  std::optional<double> accepted_extreme;
  std::string plot;
  bool equal = false;
};

void declare(CLI::App& app, options& o) {
  app.add_option("file", o.file, "CSV file of two columns, x and y; - is standard input")->required();
  app.add_option("-m,--coefficients", o.fit.coefficients, "number of coefficients, the degree plus one")
      ->check(CLI::Range(1, 60))
      ->capture_default_str();
  app.add_flag("--odd", o.fit.odd, "fit the constant and the odd powers only");
  app.add_flag("--scaled", o.fit.scaled, "fit over abscissas shifted and scaled to [-0.5, 0.5]");
  app.add_option("--at", o.at, "abscissas for the table of values, for example 0,2.5,10")
      ->delimiter(',')
      ->check(finite_number);
  app.add_option("--range", o.range, "where to search, two numbers (default: where the points are)")->expected(2);
  app.add_option("--certified", o.certified, "CSV file with columns power, coefficient to compare with");
  app.add_option("--certified-square-sum", o.certified_square_sum, "residual sum of squares to compare with")
      ->check(finite_number);
  app.add_option("--accepted-extreme", o.accepted_extreme, "abscissa to compare the extremes of the curve with")
      ->check(finite_number);
  app.add_option("--plot", o.plot, "picture to draw, .svg or .png");
  app.add_flag("--equal", o.equal, "draw both axes to the same scale");
}

void print_fit(report& r, const options& o, const fitted_curve& c) {
  r.heading("Fit");
  r.line("points used          %zu", c.points.size());
  r.line("points left out      %zu%s", c.left_out,
         o.fit.odd ? "  (an odd fit uses every point)" : "  (marked by x = -1)");
  if (c.left_out > 0)
    r.note(std::to_string(c.left_out) + (c.left_out == 1 ? " point" : " points") + " left out (marked by x = -1)");
  if (distinct_abscissas(c) < c.unknowns)
    r.line(
        "not determined       %zu distinct abscissas for %zu coefficients, this is one of many "
        "curves",
        distinct_abscissas(c), c.unknowns);
  r.line("kind                 %s%s", o.fit.odd ? "constant and odd powers" : "all powers",
         o.fit.scaled ? ", fitted over scaled abscissas" : "");
  for (tessarn::slong i = 0; i < static_cast<tessarn::slong>(c.p.getcofcnt()); ++i)
    r.line("coefficient x^%-2d     % .17g", static_cast<int>(i),
           finite(c.p.get(i), "coefficient x^" + std::to_string(i)));
}

void print_residuals(report& r, const fitted_curve& c, const residuals& e) {
  const vector worst = c.points[e.largest];
  r.heading("Residuals (point minus curve)");
  r.line("sum of squares       %.15g", e.square_sum);
  r.line("root mean square     %.6g", e.rms);
  r.line("largest              %.6g  at (%.10g, %.10g), line %zu", e.values[e.largest], worst.x, worst.y,
         c.lines[e.largest]);
}

// -log10 of the relative error.
std::string digits(double value, double certified) {
  if (value == certified) return "exact";
  const double error = std::fabs(value - certified) / (certified == 0 ? 1 : std::fabs(certified));
  if (!std::isfinite(error)) return "none";
  char s[32];
  std::snprintf(s, sizeof s, "%.1f", -std::log10(error));
  return s;
}

void check_certified(const table& t) {
  for (std::size_t i = 0; i < t.rows(); ++i) {
    const double power = t.at(i, 0);
    if (power != std::floor(power) || power < 0 || power > 1000)
      throw input_error(t.file + ":" + std::to_string(t.lines[i]) + ": " + text(power) + " is no power");
  }
}

void print_certified(report& r, const options& o, const table& data, const table& certified, const residuals& e) {
  fit_options other = o.fit;
  other.scaled = false;
  const fitted_curve plain = fit(data, other);
  other.scaled = true;
  const fitted_curve scaled = fit(data, other);
  r.heading("Correct digits against the certified coefficients");
  r.line("%-22s %-22s %-10s %s", "certified", o.fit.scaled ? "fitted (scaled)" : "fitted", "as given",
         "abscissas scaled");
  for (std::size_t i = 0; i < certified.rows(); ++i) {
    const auto power = static_cast<tessarn::slong>(certified.at(i, 0));
    const double value = certified.at(i, 1);
    r.line("%-22.15g %-22.15g %-10s %s", value, (o.fit.scaled ? scaled : plain).p.get(power),
           digits(plain.p.get(power), value).c_str(), digits(scaled.p.get(power), value).c_str());
  }
  if (o.certified_square_sum)
    r.line("certified sum of squares %.15g, correct digits %s", *o.certified_square_sum,
           digits(e.square_sum, *o.certified_square_sum).c_str());
}

std::string radius(const binom& p, double x) {
  if (p.func_2(x) == 0) return "none (straight)";
  return has_circle(p, x) ? text(p.normale(x).lenld(), 7) : "too large";
}

void print_values(report& r, const binom& p, const std::vector<double>& abscissas) {
  r.heading("Values");
  r.line("%14s %16s %16s %16s %16s %15s", "x", "p(x)", "p'(x)", "p''(x)", "curvature", "radius");
  for (const double x : abscissas) {
    const std::string at = " at x = " + text(x, 8);
    const double value = finite(p(x), "the curve" + at);
    const double slope = finite(p.func_1(x), "the slope" + at);
    const double second = finite(p.func_2(x), "the second derivative" + at);
    const double curvature = finite(p.arc(x), "the curvature" + at);
    r.line("%14.8g %16.9g %16.9g %16.9g %16.9g %15s", x, value, slope, second, curvature, radius(p, x).c_str());
  }
}

void print_extremes(report& r, const options& o, const binom& p, const std::vector<double>& extremes) {
  r.heading("Extremes of the curve (zeros of the derivative)");
  if (extremes.empty()) r.line("none in the interval");
  for (const double x : extremes) {
    const double bend = p.func_2(x);
    r.line("%-8s at x = %.10g, p(x) = %.10g",
           bend < 0   ? "maximum"
           : bend > 0 ? "minimum"
                      : "level",
           x, finite(p(x), "the curve at an extreme"));
    if (o.accepted_extreme)
      r.line("         accepted %.10g, difference %+.4g", *o.accepted_extreme, x - *o.accepted_extreme);
  }
}

void print_zeros(report& r, const std::vector<double>& zeros, bool everywhere) {
  r.heading("Zeros of the curve");
  if (everywhere) r.line("the curve is 0 throughout");
  if (zeros.empty() && !everywhere) r.line("none in the interval");
  for (const double x : zeros) r.line("x = %.12g", x);
}

void print_bends(report& r, const binom& p, const std::vector<double>& bends, const curve_marks& marks) {
  r.heading("Extremes of the curvature");
  if (bends.empty()) r.line(is_straight(p) ? "none, the curve is a straight line" : "none in the interval");
  for (const double x : bends) r.line("x = %.10g, curvature %.9g", x, finite(p.arc(x), "the curvature at an extreme"));
  for (const double x : marks.sharpest) {
    const vector centre = vector(x, p.func(x)) + p.normale(x);
    r.line("largest curvature at x = %.10g: radius %.9g, centre (%.9g, %.9g)", x, p.normale(x).lenld(),
           finite(centre.x, "the centre of curvature"), finite(centre.y, "the centre of curvature"));
  }
}

scan interval(const options& o, const fitted_curve& c) {
  if (!o.range.empty()) {
    if (!(o.range[0] < o.range[1]) || !std::isfinite(o.range[1] - o.range[0]))
      throw input_error("--range: two finite numbers, the first below the second");
    return scan_of(o.range[0], o.range[1]);
  }
  const auto [lo, hi] =
      std::minmax_element(c.points.begin(), c.points.end(), [](const vector& a, const vector& b) { return a.x < b.x; });
  finite(hi->x - lo->x, "the width of the interval");
  return scan_of(lo->x, hi->x);
}

void check_fit(const fitted_curve& c, const residuals& e) {
  if (fit_succeeded(c, e)) return;
  throw no_result("the fit failed: the curve lies farther from the points than their mean does; " +
                  std::to_string(distinct_abscissas(c)) + " distinct abscissas for " + std::to_string(c.unknowns) +
                  " coefficients");
}

curve_marks analyse(report& r, const options& o, const binom& p, const scan& s) {
  curve_marks marks;
  bool everywhere;
  marks.zeros = zeros(p, s, everywhere);
  print_zeros(r, marks.zeros, everywhere);
  binom derivative;
  p.func_1(derivative);
  marks.extremes = zeros(derivative, s, everywhere);
  print_extremes(r, o, p, marks.extremes);
  const std::vector<double> bends = curvature_extremes(p, s);
  // The search meets the same points, perhaps on another grid.
  const double sharpest = sharpest_bend(p, s);
  for (const double x : bends) {
    const bool same = std::fabs(x - sharpest) < s.step / 2 && has_circle(p, x);
    (same ? marks.sharpest : marks.curvature_extremes).push_back(x);
  }
  print_bends(r, p, bends, marks);
  return marks;
}

void job(report& r, const options& o) {
  const table data = read_csv(o.file, {"x", "y"});
  std::optional<table> certified;
  if (!o.certified.empty()) {
    certified = read_csv(o.certified, {"power", "coefficient"});
    check_certified(*certified);
  }
  const fitted_curve c = fit(data, o.fit);
  std::unique_ptr<plot> picture;
  if (!o.plot.empty()) picture = std::make_unique<plot>(o.plot, canvas_width, canvas_height);
  const scan s = interval(o, c);

  r.data_source(data);
  print_fit(r, o, c);
  const residuals e = residuals_of(c);
  finite(e.square_sum, "the sum of squares of the residuals");
  check_fit(c, e);
  print_residuals(r, c, e);
  if (certified) print_certified(r, o, data, *certified, e);
  print_values(r, c.p, o.at.empty() ? std::vector<double>{s.a, s.a + (s.b - s.a) / 2, s.b} : o.at);
  const curve_marks marks = analyse(r, o, c.p, s);
  if (picture) r.thinned(draw_curve(*picture, data, c, e, s, marks, o.equal));
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Fits a polynomial through measured points and analyses the curve."};
  options o;
  declare(app, o);
  return run(app, argc, argv, [&o](report& r) { job(r, o); });
}
