// Fits a polynomial through measured points and reports what the curve is like: coefficients, residuals, zeros,
// extremes, inflections, curvature; with a picture on demand.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

#include "commands.h"
#include "curve_analysis.h"
#include "curve_plot.h"
#include "support/report.h"

namespace {

using namespace program;

struct options {
  std::string file;
  curve_options curve;
  std::vector<double> at;
  std::vector<double> range;
  std::string certified;
  std::optional<double> certified_square_sum;
  std::optional<double> accepted_extreme;
  std::string sigma, weights;  // names of columns
  bool equal = false;
  common_options common;
};

void declare(CLI::App& app, options& o) {
  app.add_option("file", o.file, "two columns, x and y; - is standard input")->required();
  app.add_option("-m,--coefficients", o.curve.coefficients, "number of coefficients, the degree plus one, at most 60")
      ->type_name("N")
      ->check(CLI::Range(1, 60))
      ->capture_default_str();
  app.add_flag("--odd", o.curve.odd, "fit the constant and the odd powers only");
  app.add_option("--at", o.at, "abscissas for the table of values, for example 0,2.5,10")
      ->delimiter(',')
      ->allow_extra_args(false)  // the file may come next
      ->type_name("LIST")
      ->check(finite_number);
  app.add_option("--range", o.range, "where to search, two numbers (default: where the points are)")
      ->expected(2)
      ->type_name("NUMBER");
  CLI::Option* certified =
      app.add_option("--certified", o.certified, "file with columns power, coefficient to compare with")
          ->type_name("FILE");
  app.add_option("--certified-square-sum", o.certified_square_sum, "residual sum of squares to compare with")
      ->type_name("NUMBER")
      ->check(finite_number);
  app.add_option("--accepted-extreme", o.accepted_extreme, "abscissa to compare the extremes of the curve with")
      ->type_name("NUMBER")
      ->check(finite_number);
  CLI::Option* sigma =
      app.add_option("--sigma", o.sigma, "column with the standard deviation of each y")->type_name("COLUMN");
  CLI::Option* weights =
      app.add_option("--weights", o.weights, "column with the weight of each residual, 0 or positive")
          ->type_name("COLUMN");
  sigma->excludes(weights);
  certified->excludes(sigma)->excludes(weights);  // the certified coefficients are of unweighted fits
  app.add_flag("--equal", o.equal, "draw both axes to the same scale");
  declare_common(app, o.common, "x,y");
}

void print_fit(report& r, const options& o, const fitted_curve& c) {
  r.heading("Fit");
  r.line("points used          %zu", c.points.size());
  r.line("points left out      %zu%s", c.left_out,
         o.curve.odd ? "  (an odd fit uses every point)" : "  (marked by x = -1)");
  if (c.left_out > 0)
    r.note(std::to_string(c.left_out) + (c.left_out == 1 ? " point" : " points") + " left out (marked by x = -1)");
  r.line("kind                 %s", o.curve.odd ? "constant and odd powers" : "all powers");
  for (tessarn::ulong i = 0; i < c.fit.of_powers.getHeight(); ++i) {
    const double value = finite(c.fit.of_powers.get(0, i), "coefficient x^" + std::to_string(i));
    const double error = c.fit.of_powers_errors.get(0, i);
    const std::string shown = error > 0 && std::isfinite(error) ? ", standard error " + text(error, 3) : "";
    r.line("coefficient x^%-2d     % .17g%s", static_cast<int>(i), value, shown.c_str());
  }
  if (o.curve.deviations || o.curve.weighted)
    r.line("weights              %s", o.curve.weighted ? "as given" : "one over the standard deviations");
  r.line("condition            %.3g, of the powers about the centre %.10g", 1 / c.fit.reciprocal_condition,
         c.fit.centre);
}

void add_fit(report& r, const options& o, const fitted_curve& c) {
  json& found = r.findings["fit"];
  found["points_used"] = c.points.size();
  found["points_left_out"] = c.left_out;
  found["kind"] = o.curve.odd ? "constant and odd powers" : "all powers";
  for (tessarn::ulong i = 0; i < c.fit.of_powers.getHeight(); ++i)
    found["coefficients"].push_back(
        {{"power", i}, {"value", c.fit.of_powers.get(0, i)}, {"standard_error", c.fit.of_powers_errors.get(0, i)}});
  found["centre"] = c.fit.centre;
  found["condition"] = 1 / c.fit.reciprocal_condition;
  found["sum_of_squares"] = c.square_sum;
  found["degrees_of_freedom"] = c.fit.points_used - c.unknowns;
  found["standard_deviation"] = c.fit.residual_deviation;
  found["r_squared"] = c.fit.r_squared;
  const vector worst = c.points[c.fit.largest_at];
  found["largest_residual"] = {
      {"value", c.fit.largest_residual}, {"point", coordinates(worst)}, {"line", c.lines[c.fit.largest_at]}};
}

void print_residuals(report& r, const options& o, const fitted_curve& c) {
  add_fit(r, o, c);
  r.heading("Residuals (point minus curve)");
  r.line("sum of squares       %.15g", finite(c.square_sum, "the sum of squares of the residuals"));
  const std::size_t freedom = c.fit.points_used - c.unknowns;
  if (freedom > 0) r.line("standard deviation   %.6g, degrees of freedom %zu", c.fit.residual_deviation, freedom);
  if (std::isfinite(c.fit.r_squared)) r.line("R squared            %.9g", c.fit.r_squared);
  const vector worst = c.points[c.fit.largest_at];
  r.line("largest              %.6g  at (%.10g, %.10g), line %zu", c.fit.largest_residual, worst.x, worst.y,
         c.lines[c.fit.largest_at]);
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

void print_certified(report& r, const options& o, const table& certified, const fitted_curve& c) {
  const binom fitted = c.fit.expanded(), classic = classic_fit(c.points, o.curve),
              scaled = classic_scaled_fit(c.points, o.curve);
  r.heading("Correct digits against the certified coefficients");
  r.line("%-22s %-22s %-15s %-15s %s", "certified", "fitted", "fit_polynomial", "binom::create", "abscissas scaled");
  for (std::size_t i = 0; i < certified.rows(); ++i) {
    const auto power = static_cast<tessarn::slong>(certified.at(i, 0));
    const double value = certified.at(i, 1);
    r.line("%-22.15g %-22.15g %-15s %-15s %s", value, fitted.get(power), digits(fitted.get(power), value).c_str(),
           digits(classic.get(power), value).c_str(), digits(scaled.get(power), value).c_str());
  }
  if (o.certified_square_sum)
    r.line("certified sum of squares %.15g, correct digits %s", *o.certified_square_sum,
           digits(c.square_sum, *o.certified_square_sum).c_str());
}

std::string radius(const fitted_curve& c, double x) {
  if (c.p.func_2(c.u(x)) == 0) return "none (straight)";
  const double length = c.p.normale(c.u(x)).lenld();
  return std::isfinite(length) ? text(length, 7) : "too large";
}

void print_values(report& r, const fitted_curve& c, const std::vector<double>& abscissas) {
  r.heading("Values");
  r.line("%14s %16s %11s %16s %16s %16s %15s", "x", "p(x)", "std. error", "p'(x)", "p''(x)", "curvature", "radius");
  for (const double x : abscissas) {
    const std::string at = " at x = " + text(x, 8);
    const double value = finite(c.fit.value(x), "the curve" + at);
    const double slope = finite(c.p.func_1(c.u(x)), "the slope" + at);
    const double second = finite(c.p.func_2(c.u(x)), "the second derivative" + at);
    const double curvature = finite(c.p.arc(c.u(x)), "the curvature" + at);
    const double error = c.fit.predict(x, 1).mean;
    r.findings["values"].push_back({{"x", x},
                                    {"value", value},
                                    {"standard_error", error},
                                    {"slope", slope},
                                    {"second_derivative", second},
                                    {"curvature", curvature}});
    r.line("%14.8g %16.9g %11s %16.9g %16.9g %16.9g %15s", x, value,
           std::isfinite(error) ? text(error, 3).c_str() : "-", slope, second, curvature, radius(c, x).c_str());
  }
}

// Prints the places of a search, each by `show`, and returns their abscissas; `everywhere` describes a curve whose
// every place is one.
std::vector<double> print_places(report& r, const fitted_curve& c, const char* heading, const char* key,
                                 const tessarn::curve_points& places, const char* everywhere,
                                 const std::function<void(double, const tessarn::curve_point&)>& show) {
  r.heading(heading);
  if (places.state == tessarn::status::identically_zero) {
    r.line("%s", everywhere);
  } else if (places.state != tessarn::status::ok) {
    r.line("%s", tessarn::to_string(places.state));
  } else if (places.count == 0) {
    r.line("none in the interval");
  }
  json& found = r.findings[key];
  found = {{"state", tessarn::to_string(places.state)}, {"places", json::array()}};
  std::vector<double> abscissas;
  for (tessarn::ulong i = 0; i < places.count; ++i) {
    abscissas.push_back(c.fit.centre + places[i].at);
    show(abscissas.back(), places[i]);
    json place = {{"x", abscissas.back()}, {"value", places[i].value}, {"multiplicity", places[i].multiplicity}};
    if (std::string(key).find("extremes") != std::string::npos) place["maximum"] = places[i].is_maximum();
    if (std::string(key) == "curvature_extremes") {
      place["curvature"] = places[i].curvature;
      place["radius"] = places[i].radius;
    }
    found["places"].push_back(std::move(place));
  }
  return abscissas;
}

void print_circle(report& r, const fitted_curve& c, double x) {
  const vector to_centre = c.p.normale(c.u(x));
  const vector centre(finite(x + to_centre.x, "the centre of curvature"),
                      finite(c.fit.value(x) + to_centre.y, "the centre of curvature"));
  r.line("largest curvature at x = %.10g: radius %.9g, centre (%.9g, %.9g)", x, to_centre.lenld(), centre.x, centre.y);
  r.findings["largest_curvature"] = {{"x", x}, {"radius", to_centre.lenld()}, {"centre", coordinates(centre)}};
}

struct interval {
  double a, b;
};

interval interval_of(const options& o, const fitted_curve& c) {
  if (!o.range.empty()) {
    if (!(o.range[0] < o.range[1]) || !std::isfinite(o.range[1] - o.range[0]))
      throw input_error("--range: two finite numbers, the first below the second");
    return {o.range[0], o.range[1]};
  }
  const auto [lo, hi] =
      std::minmax_element(c.points.begin(), c.points.end(), [](const vector& a, const vector& b) { return a.x < b.x; });
  finite(hi->x - lo->x, "the width of the interval");
  return {lo->x, hi->x};
}

void check_fit(const fitted_curve& c) {
  switch (c.fit.state) {
    case tessarn::status::ok: return;
    case tessarn::status::too_few_distinct:
      throw no_result("the fit failed: " + std::to_string(distinct_abscissas(c)) + " distinct abscissas for " +
                      std::to_string(c.unknowns) + " coefficients");
    case tessarn::status::out_of_range:
      throw no_result("the fit is not finite: the numbers are too large for double precision");
    default: throw no_result(std::string("the fit failed: ") + tessarn::to_string(c.fit.state));
  }
}

curve_marks analyse(report& r, const options& o, const fitted_curve& c, const interval& i) {
  using tessarn::curve_point;
  const double a = c.u(i.a), b = c.u(i.b);
  curve_marks marks;
  marks.zeros = print_places(r, c, "Zeros of the curve", "zeros", tessarn::zeros(c.p, a, b),
                             "the curve is 0 throughout", [&r](double x, const curve_point& z) {
                               r.line("x = %.12g", x);
                               if (z.multiplicity > 1)
                                 r.line("  a zero of multiplicity %zu", static_cast<std::size_t>(z.multiplicity));
                             });
  marks.extremes = print_places(r, c, "Extremes of the curve", "extremes", tessarn::extremes(c.p, a, b),
                                "none, the curve is level", [&](double x, const curve_point& e) {
                                  r.line("%-8s at x = %.10g, p(x) = %.10g", e.is_maximum() ? "maximum" : "minimum", x,
                                         finite(e.value, "the curve at an extreme"));
                                  if (o.accepted_extreme)
                                    r.line("         accepted %.10g, difference %+.4g", *o.accepted_extreme,
                                           x - *o.accepted_extreme);
                                });
  marks.inflections =
      print_places(r, c, "Inflections", "inflections", tessarn::inflections(c.p, a, b),
                   "none, the curve is a straight line", [&r](double x, const curve_point& f) {
                     r.line("x = %.10g, p(x) = %.10g", x, finite(f.value, "the curve at an inflection"));
                   });
  double largest = 0;
  marks.curvature_extremes =
      print_places(r, c, "Extremes of the curvature", "curvature_extremes", tessarn::curvature_extremes(c.p, a, b),
                   "none, the curve is a straight line", [&](double x, const curve_point& k) {
                     r.line("%s at x = %.10g, curvature %.9g, radius %s", k.is_maximum() ? "sharpest" : "flattest", x,
                            finite(k.curvature, "the curvature at an extreme"), radius(c, x).c_str());
                     if (!k.is_maximum() || !(std::fabs(k.curvature) > largest) || !std::isfinite(k.radius)) return;
                     largest = std::fabs(k.curvature);
                     marks.sharpest = {x};
                   });
  for (const double x : marks.sharpest) {
    std::erase(marks.curvature_extremes, x);
    print_circle(r, c, x);
  }
  return marks;
}

// The table with the column of weights, if there is one, as its third.
table read_points(options& o) {
  std::vector<std::string> names = {"x", "y"};
  input_options input = o.common.input;
  const std::string& extra = o.sigma.empty() ? o.weights : o.sigma;
  if (!extra.empty()) {
    o.curve.deviations = !o.sigma.empty();
    o.curve.weighted = o.sigma.empty();
    names.push_back(o.sigma.empty() ? "weight" : "standard deviation");
    if (input.columns.empty()) input.columns = {"1", "2"};
    input.columns.push_back(extra);
  }
  return read_table(o.file, names, input);
}

void job(report& r, options& o) {
  r.as_json = o.common.as_json;
  r.phase("reading " + o.file);
  const table data = read_points(o);
  std::optional<table> certified;
  if (!o.certified.empty()) {
    certified = read_table(o.certified, {"power", "coefficient"}, {});
    check_certified(*certified);
  }
  r.phase("fitting " + std::to_string(data.rows()) + " points");
  const fitted_curve c = fit(data, o.curve);
  std::unique_ptr<plot> picture;
  if (!o.common.plot.empty()) picture = std::make_unique<plot>(o.common.plot, canvas_width, canvas_height);
  const interval i = interval_of(o, c);

  r.data_source(data);
  check_fit(c);
  print_fit(r, o, c);
  print_residuals(r, o, c);
  if (certified) print_certified(r, o, *certified, c);
  print_values(r, c, o.at.empty() ? std::vector<double>{i.a, i.a + (i.b - i.a) / 2, i.b} : o.at);
  r.phase("searching the curve");
  const curve_marks marks = analyse(r, o, c, i);
  if (!picture) return;
  r.phase("drawing " + o.common.plot);
  r.thinned(draw_curve(*picture, data, c, i.a, i.b, marks, o.equal));
}

}  // namespace

command program::add_curve(CLI::App& app) {
  CLI::App* curve = app.add_subcommand("curve", "Fits a polynomial through measured points and analyses the curve.");
  const auto o = std::make_shared<options>();
  declare(*curve, *o);
  return {curve, [o](report& r) { job(r, *o); }};
}
