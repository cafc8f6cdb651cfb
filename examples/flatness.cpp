// Fits a plane to measured points and reports how flat they are, beside the least-squares plane
// that the singular value decomposition of the centred points gives.

#include <algorithm>
#include <cmath>
#include <memory>

#include "points.h"
#include "support/plot.h"
#include "support/report.h"

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

flatness measure(const std::vector<vector3d>& points, const vector3d& on_plane,
                 const vector3d& normal) {
  flatness f;
  double sum = 0;
  for (const vector3d& p : points) {
    f.residuals.push_back(normal * (p - on_plane));
    sum += f.residuals.back() * f.residuals.back();
  }
  f.lowest = *std::min_element(f.residuals.begin(), f.residuals.end());
  f.highest = *std::max_element(f.residuals.begin(), f.residuals.end());
  f.rms = std::sqrt(sum / static_cast<double>(points.size()));
  return f;
}

// The right singular vector of the smallest singular value of the centred points, one a row. Throws
// when the points lie on one line.
vector3d least_squares_normal(const std::vector<vector3d>& points, const vector3d& centre) {
  mat<long double> rows, u, s, v;
  rows.create(3, static_cast<tessarn::ulong>(points.size()));
  for (tessarn::ulong y = 0; y < rows.getHeight(); ++y) {
    const vector3d p = points[y] - centre;
    rows.set(0, y, p.x);
    rows.set(1, y, p.y);
    rows.set(2, y, p.z);
  }
  rows.decompose(u, s, v);
  if (!(s.get(1, 1) > 1e-12 * s.get(0, 0)))
    throw no_result("the points lie on one line, they determine no plane");
  return {v.get(2, 0), v.get(2, 1), v.get(2, 2)};
}

void print_vector(report& r, const char* name, const vector3d& v) {
  r.line("%-20s (%.12g, %.12g, %.12g)", name, v.x, v.y, v.z);
}

void print_flatness(report& r, const flatness& f, const table& t) {
  const auto line_of = [&](double v) {
    return t.lines[static_cast<std::size_t>(std::find(f.residuals.begin(), f.residuals.end(), v) -
                                            f.residuals.begin())];
  };
  r.line("peak to valley       %.6g  (%.6g at line %zu to %.6g at line %zu)", f.highest - f.lowest,
         f.lowest, line_of(f.lowest), f.highest, line_of(f.highest));
  r.line("root mean square     %.9g", f.rms);
}

// A coloured map, seen along the coordinate axis that is closest to the normal.
void draw(plot& out, const table& t, const std::vector<vector3d>& points, const vector3d& normal,
          const flatness& f) {
  const double nx = std::fabs(normal.x), ny = std::fabs(normal.y), nz = std::fabs(normal.z);
  const std::size_t along = nz >= nx && nz >= ny ? 2 : ny >= nx ? 1 : 0;
  const std::size_t right = along == 0 ? 1 : 0, up = along == 2 ? 1 : 2;
  const bool millimetres = t.names[along].find("(mm)") != std::string::npos;
  const double scale = millimetres ? 1000 : 1;
  std::vector<std::vector<double>> rows;
  for (std::size_t i = 0; i < points.size(); ++i)
    rows.push_back({t.at(i, right), t.at(i, up), scale * f.residuals[i]});
  out.data("map", rows);
  const double largest = scale * std::max(-f.lowest, f.highest);
  out.command("set label 1 " +
              quote(t.title() + ": deviation from the fitted plane" +
                    (t.simulated() ? " (simulated data)" : "")) +
              " at screen 0.5, 0.955 center font ',17'");
  out.command(
      "unset key\nset size ratio -1\nset offsets graph 0.03, graph 0.03, graph 0.05, graph 0.05");
  out.command("set lmargin at screen 0.10\nset rmargin at screen 0.85\nset tmargin at screen 0.93");
  out.command("set bmargin at screen 0.11\nset autoscale fix");
  out.command("set xlabel " + quote(t.names[right]) + "\nset ylabel " + quote(t.names[up]));
  out.command("set cblabel " +
              quote(millimetres ? "deviation (µm)" : with_unit_of(t.names[along], "deviation")) +
              " offset 1");
  out.command(
      "set palette defined (-1 '#2a4d9c', -0.5 '#7fb2dd', 0 '#f4f4f4', 0.5 '#f0a070', 1 "
      "'#b2182b')");
  out.command("set cbrange [" + text(-largest) + ":" + text(largest) + "]");
  out.command(
      "plot $map using 1:2 with points pt 7 ps 2.5 lc rgb '#606060', "
      "$map using 1:2:3 with points pt 7 ps 2.3 palette");
  out.draw();
}

void job(report& r, const options& o) {
  const table t = read_csv(o.file, {"x", "y", "z"});
  require_rows(t, t.rows(), 3, "a plane");
  std::unique_ptr<plot> picture;
  if (!o.plot.empty()) picture = std::make_unique<plot>(o.plot, 1100, 740);
  const std::vector<vector3d> points = space_points(t);
  r.data_source(t);

  const vector3d centre = centroid(points);
  vector3d normal = least_squares_normal(points, centre);
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
  if (picture) draw(*picture, t, points, fitted.normal, f);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Fits a plane to measured points and reports their flatness."};
  options o;
  app.add_option("file", o.file, "CSV file of three columns, x, y, z")->required();
  app.add_option("--plot", o.plot, "picture to draw, .svg or .png");
  return run(app, argc, argv, [&o](report& r) { job(r, o); });
}
