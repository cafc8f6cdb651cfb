// Cleans a measured plane curve of wild readings, and follows the straight line at its start.

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include <tessarn/tessarn.h>

#include "support/plot.h"
#include "support/report.h"

namespace {

using namespace example;

struct options {
  std::string file;
  double deviation = 0;
  std::vector<double> direction;
  std::string plot;
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

void print_direction(report& r, const char* name, const vector& d) {
  r.line("%-20s (%.9g, %.9g), %.6g degrees", name, d.x, d.y, d.dirarc() * degrees);
}

// The largest distance of the points from the line through their mean along their mean direction.
double straightness(const vectormat& chain) {
  const vector mean = chain.average(), along = chain.avdir().resize(1);
  double largest = 0;
  for (tessarn::ulong i = 0; i < chain.count; ++i) {
    const vector d = chain.points[i] - mean;
    largest = std::max(largest, std::fabs(d.x * along.y - d.y * along.x));
  }
  return largest;
}

struct result {
  rows before, kept, dropped, chain, rest;
  rows line;  // two points along the mean direction of the chain
};

void draw(plot& out, const table& t, const result& f) {
  out.data("before", f.before);
  out.data("dropped", f.dropped);
  out.data("chain", f.chain);
  out.data("rest", f.rest);
  out.data("line", f.line);
  out.command("set multiplot\nset grid\nset lmargin at screen 0.10\nset rmargin at screen 0.97");
  out.command("set label 1 " + quote(t.title() + (t.simulated() ? " (simulated data)" : "")) +
              " at screen 0.53, 0.965 center font ',17'");
  double lo = f.before[0][0], hi = lo;
  for (const auto& row : f.before) {
    lo = std::min(lo, row[0]);
    hi = std::max(hi, row[0]);
  }
  out.command("set xrange " + padded_range(lo, hi, 0.03) + "\nset ylabel " + quote(t.names[1]));
  out.command("set tmargin at screen 0.88\nset bmargin at screen 0.545\nset format x ''");
  out.command("set key at screen 0.53, 0.93 center top horizontal reverse Left");
  std::string list =
      "plot $before using 1:2 with points pt 7 ps 0.5 lc rgb '#202020' title 'measured'";
  if (!f.dropped.empty())
    list += ", $dropped using 1:2 with points pt 2 ps 1.6 lw 2.5 lc rgb '#c8102e' title 'removed'";
  out.command(list);
  out.command("unset label 1\nset format x '%.7g'\nset xlabel " + quote(t.names[0]));
  out.command("set tmargin at screen 0.47\nset bmargin at screen 0.095");
  out.command("set key at screen 0.53, 0.51 center top horizontal maxcols 3 reverse Left width -4");
  list =
      "plot $line using 1:2 with lines lw 2 dt 2 lc rgb '#2a9d55' title 'mean direction of the "
      "line'";
  if (!f.rest.empty())
    list += ", $rest using 1:2 with points pt 7 ps 0.5 lc rgb '#808080' title 'remaining points'";
  list += ", $chain using 1:2 with points pt 7 ps 0.6 lc rgb '#1f5fa8' title 'points of the line'";
  out.command(list + "\nunset multiplot");
  out.draw();
}

void clean(report& r, const options& o, vectormat& list, result& f) {
  f.before = rows_of(list);
  r.heading("Before");
  r.line("points               %zu", f.before.size());
  print_direction(r, "mean direction", list.avdir());
  list.DeleteErrors(o.deviation * o.deviation);
  f.kept = rows_of(list);
  f.dropped = removed(f.before, f.kept);
  r.heading("After the removal of what lies more than " + text(o.deviation) +
            " from its neighbours");
  r.line("points               %zu, %zu removed", f.kept.size(), f.dropped.size());
  for (const auto& row : f.dropped) r.line("  removed            (%.9g, %.9g)", row[0], row[1]);
  if (f.kept.size() < 2) throw no_result("fewer than two points are left");
  print_direction(r, "mean direction", list.avdir());
}

void follow(report& r, const options& o, vectormat& list, result& f) {
  const vector start =
      o.direction.empty() ? first_direction(list) : vector(o.direction[0], o.direction[1]);
  const std::unique_ptr<vectormat> chain(list.findline(start));
  f.chain = rows_of(*chain);
  f.rest = rows_of(list);
  r.heading("The straight line at the start");
  print_direction(r, "looked for along", start);
  r.line("points               %zu, from (%.9g, %.9g) to (%.9g, %.9g)", f.chain.size(),
         f.chain.front()[0], f.chain.front()[1], f.chain.back()[0], f.chain.back()[1]);
  if (f.chain.size() < 2) throw no_result("no point follows the first one in this direction");
  print_direction(r, "mean direction", chain->avdir());
  r.line("largest distance     %.6g from the line", straightness(*chain));
  r.line("remaining points     %zu (the second point is never examined)", f.rest.size());
  const vector mean = chain->average(), along = chain->avdir();
  const vector half =
      along * (0.7 * (f.chain.back()[0] - f.chain.front()[0]) / along.x);  // a little beyond
  for (const vector& v : {mean - half, mean + half}) f.line.push_back({v.x, v.y});
}

void job(report& r, const options& o) {
  const table t = read_csv(o.file, {"x", "y"});
  require_rows(t, t.rows(), 2, "a curve");
  std::unique_ptr<plot> picture;
  if (!o.plot.empty()) picture = std::make_unique<plot>(o.plot, 1000, 900);
  vectormat list;
  for (std::size_t i = 0; i < t.rows(); ++i) list.add(vector(t.at(i, 0), t.at(i, 1)));
  r.data_source(t);
  result f;
  clean(r, o, list, f);
  follow(r, o, list, f);
  if (picture) draw(*picture, t, f);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Removes wild readings from a measured curve and follows the line at its start."};
  options o;
  app.add_option("file", o.file, "CSV file of two columns, x and y, in the order of measurement")
      ->required();
  app.add_option("--deviation", o.deviation,
                 "how far a point may lie from the mean of its neighbourhood")
      ->check(CLI::PositiveNumber)
      ->required();
  app.add_option("--direction", o.direction,
                 "direction of the line, for example 1,0.2 (default: of its first points)")
      ->delimiter(',')
      ->expected(2);
  app.add_option("--plot", o.plot, "picture to draw, .svg or .png");
  return run(app, argc, argv, [&o](report& r) { job(r, o); });
}
