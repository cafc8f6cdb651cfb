// How flat measured points are: from the least-squares plane, and as the minimum zone that ISO 1101 asks for.

#include <algorithm>
#include <cmath>
#include <memory>

#include "commands.h"
#include "points.h"
#include "support/plot.h"
#include "support/report.h"
#include "support/thin.h"

namespace {

using namespace program;

struct options {
  std::string file;
  common_options common;
};

json plane_findings(const tessarn::reference_plane& p) {
  return {{"normal", coordinates(p.normal)}, {"through", coordinates(p.point)}};
}

void print_plane(report& r, const tessarn::reference_plane& p) {
  r.line("normal               (%.12g, %.12g, %.12g)", p.normal.x, p.normal.y, p.normal.z);
  r.line("through              (%.12g, %.12g, %.12g)", p.point.x, p.point.y, p.point.z);
}

double residual(const tessarn::reference_plane& p, tessarn::ulong point) { return p.residuals.get(0, point); }

void add_findings(report& r, const table& t, const tessarn::flatness_result& f, const std::vector<vector3d>& points) {
  const tessarn::reference_plane& p = f.least_squares;
  json least_squares = plane_findings(p), zone = plane_findings(f.middle);
  least_squares["root_mean_square"] = p.root_mean_square;
  least_squares["peak_to_valley"] = p.peak_to_valley;
  least_squares["lowest"] = {{"deviation", residual(p, p.lowest)}, {t.place, t.lines[p.lowest]}};
  least_squares["highest"] = {{"deviation", residual(p, p.highest)}, {t.place, t.lines[p.highest]}};
  least_squares["state"] = tessarn::to_string(p.state);
  zone["flatness"] = f.zone;
  for (tessarn::ulong i = 0; i < f.touching_above + f.touching_below; ++i)
    zone["touching"].push_back({{"side", i < f.touching_above ? "above" : "below"},
                                {"point", coordinates(points[f.touching[i]])},
                                {t.place, t.lines[f.touching[i]]}});
  r.findings["least_squares"] = least_squares;
  r.findings["minimum_zone"] = zone;
}

void print(report& r, const table& t, const tessarn::flatness_result& f, const std::vector<vector3d>& points) {
  const tessarn::reference_plane& p = f.least_squares;
  r.heading("Least-squares plane");
  print_plane(r, p);
  r.line("root mean square     %.9g", p.root_mean_square);
  r.line("peak to valley       %.6g  (%.6g at %s %zu to %.6g at %s %zu)", p.peak_to_valley, residual(p, p.lowest),
         t.place, t.lines[p.lowest], residual(p, p.highest), t.place, t.lines[p.highest]);
  if (p.state != tessarn::status::ok) r.line("%s", tessarn::to_string(p.state));

  r.heading("Minimum zone: two parallel planes that hold all points, at the smallest distance");
  print_plane(r, f.middle);
  r.line("flatness (ISO 1101)  %.6g", f.zone);
  for (tessarn::ulong i = 0; i < f.touching_above + f.touching_below; ++i) {
    const vector3d& v = points[f.touching[i]];
    r.line("  touched %s      (%.9g, %.9g, %.9g) at %s %zu", i < f.touching_above ? "above" : "below", v.x, v.y, v.z,
           t.place, t.lines[f.touching[i]]);
  }
  const double angle = small_angle(p.normal, f.middle.normal);
  add_findings(r, t, f, points);
  r.line("The two normals differ by %.3g rad (%.3g arc seconds).", angle, angle * degrees * 3600);
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

// The points of many as the means of spots, with the lowest and the highest one. Returns the command that draws them,
// and the largest mean.
std::string draw_means(plot& out, const table& t, const view& v, double scale, const tessarn::reference_plane& p,
                       double& largest, std::size_t& count) {
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
  for (const spot& s : means_of(x, y, {p.residuals.getData(), p.residuals.getData() + t.rows()},
                                spots(*left, *right, *bottom, *top, width / longer, height / longer, 1 / along))) {
    const double over_x = 0.04 * (s.right - s.left),
                 over_y = 0.04 * (s.top - s.bottom);  // no seams
    rows.push_back({(s.left + s.right) / 2, (s.bottom + s.top) / 2, s.left - over_x, s.right + over_x,
                    s.bottom - over_y, s.top + over_y, scale * s.mean});
    largest = std::max(largest, std::fabs(rows.back().back()));
  }
  out.data("map", rows);
  count = rows.size();
  out.data("lowest", {{x[p.lowest], y[p.lowest]}});
  out.data("highest", {{x[p.highest], y[p.highest]}});
  const auto mark = [&](const std::string& block, const char* type, double value) {
    return ", $" + block + " using 1:2 with points pt " + type + " ps 1.6 lw 2 lc rgb '#000000' title '" + block +
           " point, " + text(scale * value, 4) + "'";
  };
  return "plot $map using 1:2:3:4:5:6:7 with boxxyerror fs solid 1 noborder lc palette notitle" +
         mark("highest", "8", residual(p, p.highest)) + mark("lowest", "10", residual(p, p.lowest));
}

// Every point as a coloured spot. Returns the command that draws them.
std::string draw_points(plot& out, const table& t, const view& v, double scale, const tessarn::reference_plane& p) {
  std::vector<std::vector<double>> rows;
  for (std::size_t i = 0; i < t.rows(); ++i)
    rows.push_back({t.at(i, v.right), t.at(i, v.up), scale * residual(p, static_cast<tessarn::ulong>(i))});
  out.data("map", rows);
  return "plot $map using 1:2 with points pt 7 ps 2.5 lc rgb '#606060' notitle, "
         "$map using 1:2:3 with points pt 7 ps 2.3 palette notitle";
}

// A coloured map of the deviations. Returns what of many points is drawn, in words.
std::vector<std::string> draw(plot& out, const table& t, const tessarn::flatness_result& f) {
  const tessarn::reference_plane& p = f.least_squares;
  const view v(p.normal);
  const bool millimetres = t.names[v.along].find("(mm)") != std::string::npos;
  const double scale = millimetres ? 1000 : 1;
  const bool many = t.rows() > most_points;
  double largest = scale * std::max(-residual(p, p.lowest), residual(p, p.highest));
  std::size_t count = 0;
  const std::string command = many ? draw_means(out, t, v, scale, p, largest, count) : draw_points(out, t, v, scale, p);
  const std::string what = many ? "mean deviation" : "deviation";
  out.command("set label 1 " +
              quote(t.title() + ": " + what + " from the least-squares plane" +
                    (many ? ", " + std::to_string(t.rows()) + " points" : "") +
                    (t.simulated() ? " (simulated data)" : "")) +
              " at screen 0.5, 0.955 center font ',17'");
  out.command("set size ratio -1\nset offsets graph 0.03, graph 0.03, graph 0.05, graph 0.05");
  out.command("set lmargin at screen 0.10\nset rmargin at screen 0.85");
  out.command("set tmargin at screen 0.88\nset bmargin at screen 0.11\nset autoscale fix");
  out.command("set xlabel " + quote(t.names[v.right]) + "\nset ylabel " + quote(t.names[v.up]));
  out.command("set cblabel " + quote(millimetres ? what + " (µm)" : with_unit_of(t.names[v.along], what)) +
              " offset 1");
  out.command(
      "set palette defined (-1 '#2a4d9c', -0.5 '#7fb2dd', 0 '#f4f4f4', 0.5 '#f0a070', 1 "
      "'#b2182b')");
  if (largest > 0) out.command("set cbrange [" + text(-largest) + ":" + text(largest) + "]");
  std::vector<std::vector<double>> touching;
  for (tessarn::ulong i = 0; i < f.touching_above + f.touching_below; ++i)
    touching.push_back({t.at(f.touching[i], v.right), t.at(f.touching[i], v.up)});
  out.data("touching", touching);
  out.command("set key at screen 0.475, 0.925 center top horizontal maxcols 3 reverse Left width -1");
  const std::string zone = "touched by the minimum zone of " + text(scale * f.zone, 4);
  out.command(command + ", $touching using 1:2 with points pt 6 ps 3.2 lw 2 lc rgb '#000000' title " +
              quote(millimetres ? zone + " µm" : with_unit_of(t.names[v.along], zone)));
  out.draw();
  if (!many) return {};
  return {"the means of " + std::to_string(t.rows()) + " points in " + std::to_string(count) +
          " spots, the lowest and the highest point"};
}

void job(report& r, const options& o) {
  r.as_json = o.common.as_json;
  r.phase("reading " + o.file);
  const table t = read_space_table(o.file, o.common.input);
  require_rows(t, t.rows(), 3, "a plane");
  std::unique_ptr<plot> picture;
  if (!o.common.plot.empty()) picture = std::make_unique<plot>(o.common.plot, 1100, 740);
  const std::vector<vector3d> points = space_points(t);
  r.data_source(t);

  r.phase("the smallest zone that holds " + std::to_string(points.size()) + " points");
  const tessarn::flatness_result f = tessarn::flatness(points);
  switch (f.state == tessarn::status::ok ? f.least_squares.state : f.state) {
    case tessarn::status::too_few_distinct: throw no_result("all points are the same, they determine no plane");
    case tessarn::status::collinear: throw no_result("the points lie on one line, they determine no plane");
    case tessarn::status::out_of_range: throw no_result("the points are too far apart for double precision");
    default: break;  // several planes may fit equally well
  }
  if (f.state != tessarn::status::ok) throw no_result(tessarn::to_string(f.state));
  print(r, t, f, points);
  if (!picture) return;
  r.phase("drawing " + o.common.plot);
  r.thinned(draw(*picture, t, f));
}

}  // namespace

command program::add_flatness(CLI::App& app) {
  CLI::App* flatness = app.add_subcommand("flatness", "Reports how flat measured points are.");
  const auto o = std::make_shared<options>();
  flatness->add_option("file", o->file, "three columns, x, y, z, or .ply, .xyz, .npy; - is standard input")->required();
  declare_common(*flatness, o->common, "x,y,z");
  return {flatness, [o](report& r) { job(r, *o); }};
}
