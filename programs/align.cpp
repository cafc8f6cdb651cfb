// Finds the rigid motion that carries one set of points onto a second set of the same points, and says how well they
// match then.

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
  std::string a, b;
  common_options common;
};

// The turn of a rotation.
struct turn {
  vector3d axis;  // counter-clockwise seen from its tip; (0, 0, 0) where nothing turns
  double angle = 0;
};

turn turn_of(const mat<long double>& rotation) {
  const auto r = [&rotation](tessarn::ulong row, tessarn::ulong column) { return rotation.get(column, row); };
  const vector3d twist(r(2, 1) - r(1, 2), r(0, 2) - r(2, 0), r(1, 0) - r(0, 1));
  const double trace = r(0, 0) + r(1, 1) + r(2, 2);
  turn t;
  t.angle = angle_of(twist.lenld(), trace - 1);
  if (twist.lenld() > 1e-6) {
    t.axis = twist.resize(1);
    return t;
  }
  if (trace > 0) return t;  // no rotation, no axis
  // Half a turn: R + 1 = 2 axis axis', so its longest column is along the axis.
  for (tessarn::ulong column = 0; column < 3; ++column) {
    vector3d v(r(0, column), r(1, column), r(2, column));
    (column == 0 ? v.x : column == 1 ? v.y : v.z) += 1;
    if (v.lenld() > t.axis.lenld()) t.axis = v;
  }
  t.axis = t.axis.resize(1);
  return t;
}

// A set that is not this much determined against itself is a line: about a millionth as wide as it is long.
constexpr double least_determination = 1e-12;

// Throws no_result for points that determine no rotation, whatever their partners are: not even that onto themselves.
void require_rotation(const std::vector<vector3d>& points, const std::string& name) {
  const tessarn::space_alignment own = tessarn::align(points, points);
  if (own.state == tessarn::status::too_few_distinct)
    throw no_result("the points of " + name + " are all the same, they determine no rotation");
  if (own.state != tessarn::status::out_of_range && own.determination < least_determination)
    throw no_result("the points of " + name + " lie on one line, they determine no rotation");
}

tessarn::space_alignment find_motion(const std::vector<vector3d>& a, const std::vector<vector3d>& b) {
  tessarn::space_alignment m = tessarn::align(a, b);
  if (m.state == tessarn::status::out_of_range) throw no_result("the points are too far apart for double precision");
  if (m.state != tessarn::status::ok || m.determination < least_determination)
    throw no_result("several rotations fit the points equally well, they determine none");
  return m;
}

std::vector<double> distances(const std::vector<vector3d>& a, const std::vector<vector3d>& b) {
  std::vector<double> d;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const std::initializer_list<double> parts = {a[i].x - b[i].x, a[i].y - b[i].y, a[i].z - b[i].z};
    d.push_back(finite(root_of_squares(parts), "the distance of two points"));
  }
  return d;
}

double root_mean_square(const std::vector<double>& values) {
  return root_of_squares(values) / std::sqrt(static_cast<double>(values.size()));
}

void print(report& r, const tessarn::space_alignment& m, const table& b, const std::vector<double>& before) {
  const turn t = turn_of(m.rotation);
  r.heading("Motion from the first to the second set");
  for (tessarn::ulong y = 0; y < 3; ++y)
    r.line("%-20s % .12f % .12f % .12f", y == 0 ? "rotation" : "", m.rotation.get(0, y), m.rotation.get(1, y),
           m.rotation.get(2, y));
  r.line("translation          (%.9g, %.9g, %.9g)", m.translation.x, m.translation.y, m.translation.z);
  r.line("angle                %.9g degrees", t.angle * degrees);
  if (t.axis.lenld() > 0) r.line("axis                 (%.9g, %.9g, %.9g)", t.axis.x, t.axis.y, t.axis.z);
  r.line("determination        %.3g  (2/3 at best, near 0 for points near a line)", m.determination);
  r.heading("Distances between corresponding points");
  r.line("root mean square     %.6g before, %.6g after", root_mean_square(before), m.root_mean_square);
  r.line("largest              %.6g before, %.6g after, at %s %zu of %s",
         *std::max_element(before.begin(), before.end()), m.largest_residual, b.place, b.lines[m.largest_at],
         b.name().c_str());
  json& found = r.findings;
  for (tessarn::ulong y = 0; y < 3; ++y)
    found["rotation"].push_back({m.rotation.get(0, y), m.rotation.get(1, y), m.rotation.get(2, y)});
  found["translation"] = coordinates(m.translation);
  found["angle_degrees"] = t.angle * degrees;
  found["axis"] = t.axis.lenld() > 0 ? coordinates(t.axis) : json();
  found["determination"] = m.determination;
  found["root_mean_square"] = {{"before", root_mean_square(before)}, {"after", m.root_mean_square}};
  found["largest"] = {{"distance", m.largest_residual}, {b.place, b.lines[m.largest_at]}};
}

// Of many points every second, third and so on is drawn: 1 when every point is.
std::size_t stride(std::size_t points) { return (points + most_points - 1) / most_points; }

std::vector<std::vector<double>> rows(const std::vector<vector3d>& points) {
  std::vector<std::vector<double>> r;
  for (std::size_t i = 0; i < points.size(); i += stride(points.size()))
    r.push_back({points[i].x, points[i].y, points[i].z});
  return r;
}

// The longest side of the box around both sets.
double extent(const std::vector<vector3d>& a, const std::vector<vector3d>& b) {
  double longest = 0;
  for (const auto coordinate : {&vector3d::x, &vector3d::y, &vector3d::z}) {
    double lo = a[0].*coordinate, hi = lo;
    for (const auto* points : {&a, &b})
      for (const vector3d& p : *points) {
        lo = std::min(lo, p.*coordinate);
        hi = std::max(hi, p.*coordinate);
      }
    longest = std::max(longest, hi - lo);
  }
  return longest;
}

// Says so when a reflection leaves clearly smaller distances than the rotation does.
void print_reflection(report& r, const tessarn::space_alignment& rotated, const std::vector<vector3d>& a,
                      const std::vector<vector3d>& b) {
  tessarn::align_options with_mirrors;
  with_mirrors.reflections = true;
  const double best = tessarn::align(a, b, with_mirrors).root_mean_square;
  if (!(best < 0.99 * rotated.root_mean_square && rotated.root_mean_square - best > 1e-9 * extent(b, b))) return;
  r.findings["reflected_root_mean_square"] = best;
  r.line("reflected            %.6g root mean square: a reflection would fit better", best);
  r.note("a reflection would fit better than the rotation: one set may be mirrored");
}

struct space_panel {
  double left;  // of the canvas width
  std::string title;
  const char* block;
  const char* legend;
  double extent;
  std::string first_style, second_style;
};

void draw_panel(plot& out, const space_panel& p) {
  const std::string step = text(tick_step(p.extent, 3.5));
  out.command("set size 0.5, 0.56\nset origin " + text(p.left) + ", 0.30");
  out.command("set label 2 " + quote(p.title) + " at screen " + text(p.left + 0.25) + ", 0.915 center font ',14'");
  out.command("set key at screen " + text(p.left + 0.25) +
              ", 0.895 center top horizontal maxcols 2 reverse Left width -2");
  out.command("set xtics " + step + " offset -1.1,-0.2\nset ytics " + step + " offset 1.1,-0.1\nset ztics " + step);
  out.command(std::string("splot $") + p.block + " using 1:2:3 with " + p.first_style + " lc rgb '#1f5fa8' title " +
              quote(p.legend) + ", $b using 1:2:3 with " + p.second_style + " lc rgb '#e07b00' title 'second set'");
  out.command("unset label 1\nunset label 2");
}

// Each distance as a line; of many the range and the mean in columns of the panel, which it says
// then.
std::string draw_distances(plot& out, const table& names, const std::vector<double>& distances) {
  std::vector<double> number;
  for (std::size_t i = 0; i < distances.size(); ++i) number.push_back(static_cast<double>(i + 1));
  std::vector<std::vector<double>> numbered;
  const bool many = distances.size() > most_lines;
  if (many) {
    for (const column& c : columns_of(number, distances, 1, number.back(), most_lines / 4))
      numbered.push_back({(c.left + c.right) / 2, c.mean, c.left, c.right, c.least, c.greatest});
  } else {
    for (std::size_t i = 0; i < distances.size(); ++i) numbered.push_back({number[i], distances[i]});
  }
  const double largest = *std::max_element(distances.begin(), distances.end());
  out.data("distances", numbered);
  out.command(
      "unset key\nset border 31\nset size 1, 0.3\nset origin 0, 0\nset xtics autofreq offset "
      "0\nunset zlabel");
  out.command("set lmargin at screen 0.1\nset rmargin at screen 0.96");
  out.command("set bmargin at screen 0.09\nset tmargin at screen 0.26");
  out.command("set title 'distance of corresponding points after the motion' font ',14'");
  out.command("set xlabel 'point' rotate by 0 offset 0\nset ylabel " + quote(with_unit_of(names.names[0], "distance")) +
              " offset 0 rotate by 90\nset ytics " + text(tick_step(largest, 4)) + " offset 0");
  out.command(std::string(largest > 0 ? "set yrange [0:*]" : "set yrange [0:1]") +
              "\nset xrange [0:" + std::to_string(distances.size() + 1) + "]");
  if (!many) {
    out.command("plot $distances using 1:2 with impulses lw 3 lc rgb '#1f5fa8'");
    return {};
  }
  out.command("set xtics nomirror format '%.0f'");
  out.command("set title 'distance of corresponding points after the motion: least to greatest, and mean'");
  out.command(
      "plot $distances using 1:2:3:4:5:6 with boxxyerror fs solid 1 border lc rgb '#9dbbe0' lw 0.5 "
      "lc rgb '#9dbbe0', $distances using 1:2 with lines lw 1.5 lc rgb '#123a6b'");
  return "distances in " + std::to_string(numbered.size()) + " columns: least to greatest, and mean";
}

// Both sets in one space before and after, and the distances that remain.
std::vector<std::string> draw(plot& out, const table& names, const std::vector<vector3d>& a,
                              const tessarn::space_alignment& m, const std::vector<vector3d>& b) {
  std::vector<vector3d> moved;
  moved.reserve(a.size());
  for (const vector3d& p : a) moved.push_back(m.map(p));
  out.data("a", rows(a));
  out.data("moved", rows(moved));
  out.data("b", rows(b));
  out.command("set multiplot");
  out.command("set label 1 " +
              quote(std::string("Alignment of two point sets") + (names.simulated() ? " (simulated data)" : "")) +
              " at screen 0.5, 0.965 center font ',17'");
  out.command("set view 68, 30\nset view equal xyz\nset xyplane 0.05\nset grid x y z\nset border 895");
  out.command("set xlabel " + quote(names.names[0]) + " rotate parallel offset 0,-0.5\nset ylabel " +
              quote(names.names[1]) + " rotate parallel offset 1,-0.5\nset zlabel " + quote(names.names[2]) +
              " rotate parallel");
  // The lines join the points in their order; of a cloud they would hide everything.
  const bool cloud = stride(a.size()) > 1;
  const std::string share = cloud ? ", one of " + std::to_string(stride(a.size())) + " points" : "";
  const std::string first = cloud ? "points pt 7 ps 0.3" : "linespoints pt 7 ps 0.8 lw 1.5";
  const std::string second = cloud ? "points pt 6 ps 0.6" : "linespoints pt 6 ps 1.3";
  draw_panel(out, {0.0, "before" + share, "a", "first set", extent(a, b), first, second});
  draw_panel(out, {0.5, "after" + share, "moved", "first set, moved", extent(moved, b), first, second});
  const std::string distances_drawn =
      draw_distances(out, names, {m.distances.getData(), m.distances.getData() + a.size()});
  out.command("unset multiplot");
  out.draw();
  std::vector<std::string> remarks;
  if (cloud) remarks.push_back("one of " + std::to_string(stride(a.size())) + " points of each set drawn");
  if (!distances_drawn.empty()) remarks.push_back(distances_drawn);
  return remarks;
}

void job(report& r, const options& o) {
  if (o.a == "-" && o.b == "-") throw input_error("standard input can be one of the two sets, not both");
  r.as_json = o.common.as_json;
  r.phase("reading " + o.a);
  const table ta = read_space_table(o.a, o.common.input);
  r.phase("reading " + o.b);
  const table tb = read_space_table(o.b, o.common.input);
  require_rows(ta, ta.rows(), 3, "a match");
  require_rows(tb, tb.rows(), 3, "a match");
  if (ta.rows() != tb.rows())
    throw input_error(o.b + ":" + std::to_string(tb.last_line) + ": " + std::to_string(tb.rows()) +
                      " points up to here, but " + o.a + " has " + std::to_string(ta.rows()));
  std::unique_ptr<plot> picture;
  if (!o.common.plot.empty()) picture = std::make_unique<plot>(o.common.plot, 1200, 950);
  const std::vector<vector3d> a = space_points(ta), b = space_points(tb);
  r.data_source(ta);
  r.blank();
  r.data_source(tb);
  r.phase("the motion of " + std::to_string(a.size()) + " points");
  require_rotation(a, ta.name());
  require_rotation(b, tb.name());
  const tessarn::space_alignment m = find_motion(a, b);
  print(r, m, tb, distances(a, b));
  print_reflection(r, m, a, b);
  if (!picture) return;
  r.phase("drawing " + o.common.plot);
  r.thinned(draw(*picture, ta, a, m, b));
}

}  // namespace

command program::add_align(CLI::App& app) {
  CLI::App* align =
      app.add_subcommand("align", "Finds the rigid motion from one set of points to a second set of the same points.");
  const auto o = std::make_shared<options>();
  align->add_option("first", o->a, "three columns, x, y, z, or .ply, .xyz, .npy; - is standard input")->required();
  align->add_option("second", o->b, "the same points, in the same order, after the motion")->required();
  declare_common(*align, o->common, "x,y,z of both files", false);  // a row left out of one set would shift the pairs
  return {align, [o](report& r) { job(r, *o); }};
}
