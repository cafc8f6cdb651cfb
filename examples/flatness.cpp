// Fits a plane to measured points and reports how flat they are, beside the least-squares plane
// that the singular value decomposition of the centred points gives.

#include <algorithm>
#include <cmath>
#include <memory>

#include "points.h"
#include "support/plot.h"
#include "support/report.h"
#include "support/thin.h"

namespace {

using namespace example;

struct options {
  std::string file;
  std::string plot;
};

struct flatness {
  std::vector<double> residuals;  // along the normal
  double lowest = 0, highest = 0, rms = 0;
};

flatness measure(const std::vector<vector3d>& points, const vector3d& on_plane, const vector3d& normal) {
  flatness f;
  for (const vector3d& p : points)
    f.residuals.push_back(finite(normal * (p - on_plane), "the distance of a point from the plane"));
  f.lowest = *std::min_element(f.residuals.begin(), f.residuals.end());
  f.highest = *std::max_element(f.residuals.begin(), f.residuals.end());
  f.rms = root_mean_square(f.residuals);
  return f;
}

// A second singular value of this share of the first makes a line of the points.
constexpr double line_share = 1e-12;

void print_vector(report& r, const char* name, const vector3d& v) {
  r.line("%-20s (%.12g, %.12g, %.12g)", name, finite(v.x, name), finite(v.y, name), finite(v.z, name));
}

void print_flatness(report& r, const flatness& f, const table& t) {
  const auto line_of = [&](double v) {
    return t
        .lines[static_cast<std::size_t>(std::find(f.residuals.begin(), f.residuals.end(), v) - f.residuals.begin())];
  };
  r.line("peak to valley       %.6g  (%.6g at line %zu to %.6g at line %zu)",
         finite(f.highest - f.lowest, "peak to valley"), f.lowest, line_of(f.lowest), f.highest, line_of(f.highest));
  r.line("root mean square     %.9g", f.rms);
}

// How the plane is looked at: along the coordinate axis that is closest to its normal.
struct view {
  std::size_t right, up, along;
  explicit view(const vector3d& normal) {
    const double nx = std::fabs(normal.x), ny = std::fabs(normal.y), nz = std::fabs(normal.z);
    along = nz >= nx && nz >= ny ? 2 : ny >= nx ? 1 : 0;
    right = along == 0 ? 1 : 0;
    up = along == 2 ? 1 : 2;
  }
};

// The points of many as the means of spots, with the lowest and the highest one. Returns the
// command that draws them, and the largest mean.
std::string draw_means(plot& out, const table& t, const view& v, double scale, const flatness& f, double& largest,
                       std::size_t& count) {
  std::vector<double> x, y;
  for (std::size_t i = 0; i < t.rows(); ++i) {
    x.push_back(t.at(i, v.right));
    y.push_back(t.at(i, v.up));
  }
  const auto [left, right] = std::minmax_element(x.begin(), x.end());
  const auto [bottom, top] = std::minmax_element(y.begin(), y.end());
  const double width = *right - *left, height = *top - *bottom, longer = std::max(width, height);
  // 120 spots along the longer side, fewer when they would hold less than 20 points.
  const double along = std::min(
      120.0, std::sqrt(static_cast<double>(t.rows()) / 20 * longer / std::max(std::min(width, height), longer / 120)));
  std::vector<std::vector<double>> rows;
  largest = 0;
  for (const spot& s :
       means_of(x, y, f.residuals, spots(*left, *right, *bottom, *top, width / longer, height / longer, 1 / along))) {
    const double over_x = 0.04 * (s.right - s.left),
                 over_y = 0.04 * (s.top - s.bottom);  // no seams
    rows.push_back({(s.left + s.right) / 2, (s.bottom + s.top) / 2, s.left - over_x, s.right + over_x,
                    s.bottom - over_y, s.top + over_y, scale * s.mean});
    largest = std::max(largest, std::fabs(rows.back().back()));
  }
  out.data("map", rows);
  count = rows.size();
  const auto lowest =
      static_cast<std::size_t>(std::min_element(f.residuals.begin(), f.residuals.end()) - f.residuals.begin());
  const auto highest =
      static_cast<std::size_t>(std::max_element(f.residuals.begin(), f.residuals.end()) - f.residuals.begin());
  out.data("lowest", {{x[lowest], y[lowest]}});
  out.data("highest", {{x[highest], y[highest]}});
  out.command("set key at screen 0.475, 0.925 center top horizontal reverse Left width -1");
  const auto mark = [&](const std::string& block, const char* type, double value) {
    return ", $" + block + " using 1:2 with points pt " + type + " ps 1.6 lw 2 lc rgb '#000000' title '" + block +
           " point, " + text(scale * value, 4) + "'";
  };
  return "plot $map using 1:2:3:4:5:6:7 with boxxyerror fs solid 1 noborder lc palette notitle" +
         mark("highest", "8", f.highest) + mark("lowest", "10", f.lowest);
}

// Every point as a coloured spot. Returns the command that draws them.
std::string draw_points(plot& out, const table& t, const view& v, double scale, const flatness& f) {
  std::vector<std::vector<double>> rows;
  for (std::size_t i = 0; i < t.rows(); ++i) rows.push_back({t.at(i, v.right), t.at(i, v.up), scale * f.residuals[i]});
  out.data("map", rows);
  out.command("unset key");
  return "plot $map using 1:2 with points pt 7 ps 2.5 lc rgb '#606060', "
         "$map using 1:2:3 with points pt 7 ps 2.3 palette";
}

// A coloured map of the deviations. Returns what of many points is drawn, in words.
std::vector<std::string> draw(plot& out, const table& t, const vector3d& normal, const flatness& f) {
  const view v(normal);
  const bool millimetres = t.names[v.along].find("(mm)") != std::string::npos;
  const double scale = millimetres ? 1000 : 1;
  const bool many = t.rows() > most_points;
  double largest = scale * std::max(-f.lowest, f.highest);
  std::size_t count = 0;
  const std::string command = many ? draw_means(out, t, v, scale, f, largest, count) : draw_points(out, t, v, scale, f);
  const std::string what = many ? "mean deviation" : "deviation";
  out.command("set label 1 " +
              quote(t.title() + ": " + what + " from the fitted plane" +
                    (many ? ", " + std::to_string(t.rows()) + " points" : "") +
                    (t.simulated() ? " (simulated data)" : "")) +
              " at screen 0.5, 0.955 center font ',17'");
  out.command("set size ratio -1\nset offsets graph 0.03, graph 0.03, graph 0.05, graph 0.05");
  out.command("set lmargin at screen 0.10\nset rmargin at screen 0.85");
  out.command(std::string("set tmargin at screen ") + (many ? "0.88" : "0.93"));
  out.command("set bmargin at screen 0.11\nset autoscale fix");
  out.command("set xlabel " + quote(t.names[v.right]) + "\nset ylabel " + quote(t.names[v.up]));
  out.command("set cblabel " + quote(millimetres ? what + " (µm)" : with_unit_of(t.names[v.along], what)) +
              " offset 1");
  out.command(
      "set palette defined (-1 '#2a4d9c', -0.5 '#7fb2dd', 0 '#f4f4f4', 0.5 '#f0a070', 1 "
      "'#b2182b')");
  if (largest > 0) out.command("set cbrange [" + text(-largest) + ":" + text(largest) + "]");
  out.command(command);
  out.draw();
  if (!many) return {};
  return {"the means of " + std::to_string(t.rows()) + " points in " + std::to_string(count) +
          " spots, the lowest and the highest point"};
}

void job(report& r, const options& o) {
  const table t = read_csv(o.file, {"x", "y", "z"});
  require_rows(t, t.rows(), 3, "a plane");
  std::unique_ptr<plot> picture;
  if (!o.plot.empty()) picture = std::make_unique<plot>(o.plot, 1100, 740);
  const std::vector<vector3d> points = space_points(t);
  r.data_source(t);

  const spread s = spread_of(points, t.name());
  if (s.is_line(line_share))
    throw no_result(s.is_point() ? "all points are the same, they determine no plane"
                                 : "the points lie on one line, they determine no plane");
  const vector3d centre = s.centre;
  vector3d normal = s.normal;
  const plane fitted(points.data(), static_cast<tessarn::ulong>(points.size()));
  if (!(fitted.normal.lenld() > 0)) throw no_result("the points determine no plane");
  if (normal * fitted.normal < 0) normal = normal * -1.0;

  r.heading("Fitted plane");
  print_vector(r, "normal", fitted.normal);
  print_vector(r, "origin", fitted.origin);
  print_vector(r, "first axis", fitted.axis1);
  print_vector(r, "second axis", fitted.axis2);
  const flatness f = measure(points, fitted.origin, fitted.normal);
  print_flatness(r, f, t);

  r.heading("Least-squares plane, from the decomposition of the centred points");
  print_vector(r, "normal", normal);
  print_vector(r, "through", centre);
  print_flatness(r, measure(points, centre, normal), t);
  const double angle = small_angle(normal, fitted.normal);
  r.line("The two normals differ by %.3g rad (%.3g arc seconds).", angle, angle * degrees * 3600);
  if (picture) r.thinned(draw(*picture, t, fitted.normal, f));
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Fits a plane to measured points and reports their flatness."};
  options o;
  app.add_option("file", o.file, "CSV file of three columns, x, y, z; - is standard input")->required();
  app.add_option("--plot", o.plot, "picture to draw, .svg or .png");
  return run(app, argc, argv, [&o](report& r) { job(r, o); });
}
