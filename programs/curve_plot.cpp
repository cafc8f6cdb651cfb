#include "curve_plot.h"

#include <algorithm>
#include <cmath>

#include "points.h"
#include "support/thin.h"

namespace program {
namespace {

using rows = std::vector<std::vector<double>>;

struct extent {
  double lo, hi;
  void include(double v) {
    lo = std::min(lo, v);
    hi = std::max(hi, v);
  }
};

// The part of the circle of curvature at x that can be seen in a window of this circumference.
rows circle(const fitted_curve& c, double x, double circumference) {
  const vector to_centre = c.p.normale(c.u(x));
  const double radius = to_centre.lenld();
  const double start = angle_of(-to_centre.y, -to_centre.x);
  const double half_turn = std::min(tessarn::pi, circumference / radius);
  rows points;
  constexpr int steps = 400;
  for (int i = -steps; i <= steps; ++i) {
    const double angle = start + half_turn * i / steps;
    points.push_back({x + to_centre.x + radius * tessarn::angles::cos(angle),
                      c.fit.value(x) + to_centre.y + radius * tessarn::angles::sin(angle)});
  }
  return points;
}

rows on_curve(const fitted_curve& c, const std::vector<double>& abscissas) {
  rows points;
  for (const double x : abscissas) points.push_back({x, c.fit.value(x)});
  return points;
}

// Writes the blocks and returns what is to be drawn from them.
class layers {
 public:
  explicit layers(plot& out) : out_(out) {}
  void add(const std::string& block, const rows& points, const std::string& style, const std::string& title) {
    if (points.empty()) return;
    ++count_;
    out_.data(block, points);
    list_ += (list_.empty() ? "plot $" : ", $") + block + " using 1:2 with " + style + " title " + quote(title);
  }
  const std::string& list() const { return list_; }
  int count() const { return count_; }

 private:
  plot& out_;
  int count_ = 0;
  std::string list_;
};

// Many residuals as the range, the mean and the standard deviation in columns of the panel. Returns
// the number of columns.
std::size_t draw_columns(plot& out, const std::vector<double>& x, const std::vector<double>& residuals, double left,
                         double right) {
  const std::size_t most = std::clamp<std::size_t>(x.size() / 10, 100, 400);
  rows range, middle;
  for (const column& c : columns_of(x, residuals, left, right, most)) {
    range.push_back({c.mean, c.left, c.right, c.least, c.greatest});
    middle.push_back({c.mean, c.left, c.right, c.mean - c.deviation, c.mean + c.deviation});
  }
  out.data("range", range);
  out.data("middle", middle);
  // Twice the width of the line closes the seams between the boxes.
  const auto boxes = [](const std::string& block, const std::string& colour) {
    return "$" + block + " using (($2+$3)/2):1:2:3:4:5 with boxxyerror fs solid 1 border lc rgb '" + colour +
           "' lw 0.5 lc rgb '" + colour + "'";
  };
  out.command("set key at screen 0.545, 0.352 center top horizontal maxcols 3 reverse Left width 0");
  out.command("plot " + boxes("range", "#c3d6ec") + " title 'least to greatest', " + boxes("middle", "#6d9acb") +
              " title 'mean ± standard deviation', " +
              "$range using (($2+$3)/2):1 with lines lw 1.5 lc rgb '#123a6b' title 'mean'");
  return range.size();
}

void draw_residuals(plot& out, const std::vector<double>& x, const std::vector<double>& residuals) {
  rows lines;
  for (std::size_t i = 0; i < x.size(); ++i) lines.push_back({x[i], residuals[i]});
  out.data("residuals", lines);
  out.command(
      "plot $residuals using 1:2 with impulses lw 1.5 lc rgb '#1f5fa8', "
      "$residuals using 1:2 with points pt 7 ps 0.6 lc rgb '#202020'");
}

}  // namespace

std::vector<std::string> draw_curve(plot& out, const table& t, const fitted_curve& c, double a, double b,
                                    const curve_marks& marks, bool equal) {
  rows curve, points;
  std::vector<double> px, py;
  extent x{a, b}, y{c.fit.value(a), c.fit.value(a)};
  constexpr int steps = 600;
  for (int i = 0; i <= steps; ++i) {
    const double at = a + (b - a) * i / steps;
    curve.push_back({at, c.fit.value(at)});
    y.include(curve.back()[1]);
  }
  for (std::size_t i = 0; i < c.points.size(); ++i) {
    x.include(c.points[i].x);
    y.include(c.points[i].y);
    px.push_back(c.points[i].x);
    py.push_back(c.points[i].y);
  }
  const std::vector<std::size_t> shown =
      visible(px, py, spots(x.lo, x.hi, y.lo, y.hi, 0.83 * canvas_width, 0.5 * canvas_height));
  for (const std::size_t i : shown) points.push_back({px[i], py[i]});
  layers upper(out);
  for (const double at : marks.sharpest) {
    const double window = 4 * ((x.hi - x.lo) + (y.hi - y.lo));
    upper.add("circle", circle(c, at, window), "lines lw 2 dt 2 lc rgb '#2a9d55'",
              "circle of curvature, R = " + text(c.p.normale(c.u(at)).lenld(), 4));
  }
  // The curve runs behind single points, and in front of a cloud.
  const std::string points_title = drawn("points", shown.size(), px.size());
  const char* grey = "points pt 7 ps 0.6 lc rgb '#a0a0a0'";
  const char* black = "points pt 7 ps 0.6 lc rgb '#202020'";
  const bool cloud = px.size() > most_lines;
  if (cloud) upper.add("points", points, grey, points_title);
  upper.add("curve", curve, "lines lw 2 lc rgb '#1f5fa8'", "fitted curve");
  if (!cloud) upper.add("points", points, black, points_title);
  upper.add("zeros", on_curve(c, marks.zeros), "points pt 6 ps 1.8 lw 2 lc rgb '#c8102e'", "zeros");
  upper.add("extremes", on_curve(c, marks.extremes), "points pt 8 ps 1.9 lw 2 lc rgb '#e07b00'",
            "extremes of the curve");
  upper.add("inflections", on_curve(c, marks.inflections), "points pt 2 ps 1.5 lw 2 lc rgb '#00838f'", "inflections");
  upper.add("bends", on_curve(c, marks.curvature_extremes), "points pt 12 ps 1.8 lw 2 lc rgb '#8a4fbf'",
            "extremes of the curvature");
  upper.add("sharpest", on_curve(c, marks.sharpest), "points pt 13 ps 1.8 lc rgb '#2a9d55'", "largest curvature");

  out.command("set multiplot");
  out.command("set label 1 " + quote(t.title() + (t.simulated() ? " (simulated data)" : "")) +
              " at screen 0.5, 0.965 center font ',17'");
  const int columns = upper.count() <= 3 ? 3 : 2;
  out.command("set key at screen 0.545, 0.945 center top horizontal maxcols " + std::to_string(columns) +
              " reverse Left width -1 samplen 2.5");
  const int rows_of_key = (upper.count() + columns - 1) / columns;
  const double top = 0.92 - 0.02 * rows_of_key, bottom = 0.37;
  // With equal scales the panel takes its shape from the ranges, which have the room of
  // padded_range.
  double width = 0.83;
  if (equal) width = std::min(width, (top - bottom) * canvas_height / canvas_width * (x.hi - x.lo) / (y.hi - y.lo));
  const double height = equal ? width * canvas_width / canvas_height * (y.hi - y.lo) / (x.hi - x.lo) : top - bottom;
  out.command("set lmargin at screen " + text(0.545 - width / 2) + "\nset rmargin at screen " +
              text(0.545 + width / 2));
  out.command("set bmargin at screen " + text(bottom) + "\nset tmargin at screen " + text(bottom + height));
  out.command("set grid\nset xrange " + padded_range(x.lo, x.hi) + "\nset yrange " + padded_range(y.lo, y.hi));
  out.command("set ylabel " + quote(t.names[1]) + " offset -1\nset format x ''");
  out.command(upper.list());

  out.command("unset label 1\nunset key\nset format x '%.7g'");
  out.command("set tmargin at screen " + text(cloud ? 0.315 : 0.335) + "\nset bmargin at screen 0.085");
  const double largest = std::fabs(c.fit.largest_residual);
  out.command("set yrange " + padded_range(-largest, largest, 0.1) + "\nset ytics autofreq");
  out.command("set xlabel " + quote(t.names[0]));
  out.command("set ylabel " + quote(with_unit_of(t.names[1], "residual")) + " offset -1");
  out.command("set xzeroaxis lc rgb '#404040' lt 1");
  std::vector<std::string> remarks;
  if (shown.size() < px.size())
    remarks.push_back(drawn("points", shown.size(), px.size()) + ", one where several coincide");
  if (cloud) {
    remarks.push_back("residuals in " + std::to_string(draw_columns(out, px, c.residuals, x.lo, x.hi)) +
                      " columns: least to greatest, mean and standard deviation");
  } else {
    draw_residuals(out, px, c.residuals);
  }
  out.command("unset multiplot");
  out.draw();
  return remarks;
}

}  // namespace program
