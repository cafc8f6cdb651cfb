// Cleans a measured plane curve of wild readings, and follows the straight line at its start.

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include <tessarn/tessarn.h>

#include "commands.h"
#include "support/plot.h"
#include "support/report.h"
#include "support/thin.h"

namespace {

using namespace program;

struct options {
  std::string file;
  double deviation = 0;
  std::vector<double> direction;
  common_options common;
};

using rows = std::vector<std::vector<double>>;

rows rows_of(const vectormat& list) {
  rows r;
  for (tessarn::ulong i = 0; i < list.count; ++i) r.push_back({list.points[i].x, list.points[i].y});
  return r;
}

// The rows of `all` that are missing in `kept`, which has the same order.
rows removed(const rows& all, const rows& kept) {
  rows r;
  std::size_t k = 0;
  for (const auto& row : all) {
    if (k < kept.size() && row == kept[k]) {
      ++k;
    } else {
      r.push_back(row);
    }
  }
  return r;
}

// The mean direction of the first ten points, where a line is to start.
vector first_direction(const vectormat& list) {
  vectormat start;
  for (tessarn::ulong i = 0; i < list.count && i < 10; ++i) start.add(list.points[i]);
  return start.avdir();
}

// The list can hold a vertical line, but its fit of y over x cannot.
vector mean_direction(const vectormat& list) {
  const bool vertical =
      std::all_of(list.begin(), list.end(), [&list](const vector& v) { return v.x == list.begin()->x; });
  return vertical ? vector(0, 1) : list.avdir();
}

void print_direction(report& r, const char* name, const vector& d) {
  r.line("%-20s (%.9g, %.9g), %.6g degrees", name, d.x, d.y, d.dirarc() * degrees);
}

json direction_findings(const vector& d) { return {{"direction", coordinates(d)}, {"degrees", d.dirarc() * degrees}}; }

// The largest distance of the points from the line through their mean along their mean direction.
double straightness(const vectormat& chain) {
  const vector mean = chain.average(), along = mean_direction(chain).resize(1);
  double largest = 0;
  for (tessarn::ulong i = 0; i < chain.count; ++i) {
    const vector d = chain.points[i] - mean;
    largest = std::max(largest, std::fabs(d.x * along.y - d.y * along.x));
  }
  return largest;
}

// The fits form squares and sums of them, which must not overflow or vanish.
void require_size(const vectormat& list) {
  constexpr double least = 1e-140, most = 1e140;
  double x = 0, y = 0;
  for (const vector& v : list) {
    x = std::max(x, std::fabs(v.x));
    y = std::max(y, std::fabs(v.y));
  }
  for (const double largest : {x, y})
    if (largest > most || (largest > 0 && largest < least))
      throw no_result("the largest coordinate is " + text(largest) + ", the fits need one from 1e-140 to 1e140");
}

struct result {
  rows before, kept, dropped, chain, rest;
  rows line;  // two points along the mean direction of the chain
};

// Writes the block with what can be seen of the points in a panel that shows `seen`, and returns
// how many these are.
std::size_t thinned(plot& out, const std::string& block, const rows& points, const rows& seen) {
  std::vector<double> x, y;
  for (const auto& row : points) {
    x.push_back(row[0]);
    y.push_back(row[1]);
  }
  const auto [left, right] = std::minmax_element(seen.begin(), seen.end());
  const auto [bottom, top] =
      std::minmax_element(seen.begin(), seen.end(), [](const auto& a, const auto& b) { return a[1] < b[1]; });
  rows shown;
  for (const std::size_t i : visible(x, y, spots((*left)[0], (*right)[0], (*bottom)[1], (*top)[1], 870, 310)))
    shown.push_back(points[i]);
  out.data(block, shown);
  return shown.size();
}

// A range for points of one ordinate, which gnuplot cannot find by itself.
std::string y_range(const rows& points) {
  const double y = points[0][1];
  const bool flat = std::all_of(points.begin(), points.end(), [y](const auto& row) { return row[1] == y; });
  return flat ? "set yrange " + padded_range(y, y) : "set yrange [*:*]";
}

// Returns what of many points is drawn, in words.
std::vector<std::string> draw(plot& out, const table& t, const result& f) {
  std::vector<std::string> remarks;
  const auto points = [&](const std::string& block, const rows& all, const rows& seen, const std::string& style,
                          const std::string& title) {
    if (all.empty()) return std::string();
    const std::size_t shown = thinned(out, block, all, seen);
    if (shown < all.size()) remarks.push_back(drawn(title, shown, all.size()) + ", one where several coincide");
    return ", $" + block + " using 1:2 with points " + style + " title " + quote(drawn(title, shown, all.size()));
  };
  const bool many = f.before.size() > most_points;  // wider legends, and dots that make a line again
  const std::string dot = std::string("pt 7 ps ") + (many ? "0.7" : "0.5") + " lc rgb '";
  out.data("line", f.line);
  out.command("set multiplot\nset grid\nset lmargin at screen 0.10\nset rmargin at screen 0.97");
  out.command("set label 1 " + quote(t.title() + (t.simulated() ? " (simulated data)" : "")) +
              " at screen 0.53, 0.965 center font ',17'");
  const auto [left, right] = std::minmax_element(f.before.begin(), f.before.end());
  out.command("set xrange " + padded_range((*left)[0], (*right)[0], 0.03) + "\nset ylabel " + quote(t.names[1]));
  out.command("set tmargin at screen 0.88\nset bmargin at screen 0.545\nset format x ''");
  out.command("set key at screen 0.53, 0.93 center top horizontal reverse Left");
  const std::string measured = points("before", f.before, f.before, dot + "#202020'", "measured") +
                               points("dropped", f.dropped, f.before, "pt 2 ps 1.6 lw 2.5 lc rgb '#c8102e'", "removed");
  out.command(y_range(f.before) + "\nplot" + measured.substr(1));
  out.command("unset label 1\nset format x '%.7g'\nset xlabel " + quote(t.names[0]));
  out.command(std::string("set tmargin at screen ") + (many ? "0.46" : "0.47") + "\nset bmargin at screen 0.095");
  out.command(std::string("set key at screen 0.53, ") + (many ? "0.52" : "0.51") +
              " center top horizontal maxcols 3 reverse Left width -4");
  out.command(y_range(f.kept));
  out.command("plot $line using 1:2 with lines lw 2 dt 2 lc rgb '#2a9d55' title 'mean direction'" +
              points("rest", f.rest, f.kept, dot + "#808080'", "remaining points") +
              points("chain", f.chain, f.kept, "pt 7 ps 0.6 lc rgb '#1f5fa8'", "points of the line"));
  out.command("unset multiplot");
  out.draw();
  return remarks;
}

void clean(report& r, const options& o, vectormat& list, result& f) {
  f.before = rows_of(list);
  r.heading("Before");
  r.line("points               %zu", f.before.size());
  print_direction(r, "mean direction", mean_direction(list));
  r.findings["before"] = direction_findings(mean_direction(list));
  r.findings["before"]["points"] = f.before.size();
  list.DeleteErrors(o.deviation * o.deviation);
  f.kept = rows_of(list);
  f.dropped = removed(f.before, f.kept);
  r.heading("After the removal of what lies more than " + text(o.deviation) + " from its neighbours");
  r.line("points               %zu, %zu removed", f.kept.size(), f.dropped.size());
  const auto marked = std::count_if(f.dropped.begin(), f.dropped.end(), [](const auto& row) { return row[0] == -1; });
  if (marked > 0)
    r.note(std::to_string(marked) + (marked == 1 ? " point" : " points") + " left out (marked by x = -1)");
  for (const auto& row : f.dropped) r.line("  removed            (%.9g, %.9g)", row[0], row[1]);
  json& after = r.findings["after"];
  after = {{"points", f.kept.size()}, {"removed", f.dropped}};
  if (f.kept.size() < 2) throw no_result("fewer than two points are left");
  print_direction(r, "mean direction", mean_direction(list));
  after.update(direction_findings(mean_direction(list)));
}

// Fits a line robustly through all readings between the ends of the found line, wild readings included, and prints its
// direction and how many readings got weight 0. A vertical line has no slope, and nothing is printed.
void print_robust(report& r, const result& f) {
  const auto [first, last] = std::minmax_element(f.chain.begin(), f.chain.end());
  std::vector<vector> stretch;
  for (const auto& row : f.before)
    if (row[0] >= (*first)[0] && row[0] <= (*last)[0] && row[0] != -1) stretch.emplace_back(row[0], row[1]);
  const tessarn::robust_fit robust = tessarn::fit_robust(stretch, 2);
  if (robust.state != tessarn::status::ok) return;
  const double* weights = robust.weights.getData();
  print_direction(r, "fit_robust gives", vector(1, robust.fit.of_powers.get(0, 1)));
  const auto without_weight = static_cast<std::size_t>(std::count(weights, weights + stretch.size(), 0.0));
  r.line("                     from all %zu points of the stretch as measured, %zu of them with weight 0",
         stretch.size(), without_weight);
  json& found = r.findings["line"]["robust"];
  found = direction_findings(vector(1, robust.fit.of_powers.get(0, 1)));
  found["points"] = stretch.size();
  found["with_weight_0"] = without_weight;
}

void follow(report& r, const options& o, vectormat& list, result& f) {
  const vector start = o.direction.empty() ? first_direction(list) : vector(o.direction[0], o.direction[1]);
  const std::unique_ptr<vectormat> chain(list.findline(start));
  f.chain = rows_of(*chain);
  f.rest = rows_of(list);
  r.heading("The straight line at the start");
  print_direction(r, "looked for along", start);
  r.line("points               %zu, from (%.9g, %.9g) to (%.9g, %.9g)", f.chain.size(), f.chain.front()[0],
         f.chain.front()[1], f.chain.back()[0], f.chain.back()[1]);
  if (f.chain.size() < 2) throw no_result("no point follows the first one in this direction");
  print_direction(r, "mean direction", mean_direction(*chain));
  json& found = r.findings["line"];
  found = direction_findings(mean_direction(*chain));
  found["points"] = f.chain.size();
  found["from"] = f.chain.front();
  found["to"] = f.chain.back();
  found["largest_distance"] = straightness(*chain);
  found["remaining_points"] = f.rest.size();
  print_robust(r, f);
  r.line("largest distance     %.6g from the line", straightness(*chain));
  r.line("remaining points     %zu (the second point is never examined)", f.rest.size());
  const vector mean = chain->average();
  const vector ends = chain->points[chain->count - 1] - chain->points[0];
  const vector half = mean_direction(*chain).resize(0.7 * ends.lenld());  // a little beyond
  for (const vector& v : {mean - half, mean + half}) f.line.push_back({v.x, v.y});
}

void job(report& r, const options& o) {
  r.as_json = o.common.as_json;
  r.phase("reading " + o.file);
  const table t = read_table(o.file, {"x", "y"}, o.common.input);
  require_rows(t, t.rows(), 2, "a curve");
  std::unique_ptr<plot> picture;
  if (!o.common.plot.empty()) picture = std::make_unique<plot>(o.common.plot, 1000, 900);
  if (!o.direction.empty() && o.direction[0] == 0 && o.direction[1] == 0)
    throw input_error("--direction: 0,0 is no direction");
  vectormat list;
  list.reserve(static_cast<tessarn::ulong>(t.rows()));
  for (std::size_t i = 0; i < t.rows(); ++i) list.add(vector(t.at(i, 0), t.at(i, 1)));
  r.data_source(t);
  require_size(list);
  result f;
  r.phase("cleaning " + std::to_string(t.rows()) + " points");
  clean(r, o, list, f);
  follow(r, o, list, f);
  if (!picture) return;
  r.phase("drawing " + o.common.plot);
  r.thinned(draw(*picture, t, f));
}

// A positive number whose square is one, too: distances are compared by their squares.
const CLI::Validator squared_number(
    [](std::string& s) -> std::string {
      double v;
      if (!CLI::detail::lexical_cast(s, v) || std::isnan(v)) return "'" + s + "' is not a number";
      if (!(v > 0)) return "must be positive";
      return v < 1e-150 || v > 1e150 ? "must lie between 1e-150 and 1e150" : "";
    },
    "POSITIVE");

}  // namespace

command program::add_outliers(CLI::App& app) {
  CLI::App* outliers =
      app.add_subcommand("outliers", "Removes wild readings from a measured curve and follows the line at its start.");
  const auto o = std::make_shared<options>();
  outliers->add_option("file", o->file, "two columns, x and y, in the order of measurement; - is standard input")
      ->required();
  outliers->add_option("--deviation", o->deviation, "how far a point may lie from the mean of its neighbourhood")
      ->type_name("NUMBER")
      ->check(squared_number)
      ->required();
  outliers
      ->add_option("--direction", o->direction,
                   "direction of the line, for example 1,0.2 (default: of its first points)")
      ->type_name("X,Y")
      ->delimiter(',')
      ->expected(2)
      ->check(finite_number);
  declare_common(*outliers, o->common, "x,y");
  return {outliers, [o](report& r) { job(r, *o); }};
}
