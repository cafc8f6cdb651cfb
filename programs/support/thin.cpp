#include "thin.h"

#include <algorithm>
#include <cmath>

namespace program {
namespace {

// Which of n equal parts of [lo, hi] holds v; n when none does. The right end belongs to the last.
std::size_t part(double v, double lo, double hi, std::size_t n) {
  if (!(v >= lo && v <= hi)) return n;
  if (!(hi > lo)) return 0;
  const double share = (v - lo) / (hi - lo) * static_cast<double>(n);
  return std::min(static_cast<std::size_t>(share), n - 1);
}

// The lower edge of part i; the edge above it is that of i + 1.
double edge(double lo, double hi, std::size_t n, std::size_t i) {
  return lo + (hi - lo) * static_cast<double>(i) / static_cast<double>(n);
}

// The number of the spot that holds (x, y); columns * rows when none does.
std::size_t spot_of(double x, double y, const raster& r) {
  const std::size_t c = part(x, r.left, r.right, r.columns), l = part(y, r.bottom, r.top, r.rows);
  return c == r.columns || l == r.rows ? r.columns * r.rows : l * r.columns + c;
}

}  // namespace

raster spots(double left, double right, double bottom, double top, double width, double height, double side) {
  const auto count = [side](double pixels) {
    return static_cast<std::size_t>(std::max(1.0, std::round(pixels / side)));
  };
  return {left, right, bottom, top, count(width), count(height)};
}

std::vector<std::size_t> visible(const std::vector<double>& x, const std::vector<double>& y, const raster& r) {
  std::vector<std::size_t> shown;
  const bool all = x.size() <= most_points;
  std::vector<bool> taken(r.columns * r.rows + 1);
  taken.back() = true;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const std::size_t s = spot_of(x[i], y[i], r);
    if (!all && taken[s]) continue;
    taken[s] = true;
    shown.push_back(i);
  }
  return shown;
}

std::string drawn(const std::string& what, std::size_t shown, std::size_t all) {
  if (shown == all) return what;
  return what + " (" + std::to_string(shown) + " of " + std::to_string(all) + " drawn)";
}

std::vector<column> columns_of(const std::vector<double>& x, const std::vector<double>& y, double left, double right,
                               std::size_t columns) {
  std::vector<column> all(columns);
  std::vector<double> squares(columns);  // around the mean
  for (std::size_t i = 0; i < x.size(); ++i) {
    const std::size_t k = part(x[i], left, right, columns);
    if (k == columns) continue;
    column& c = all[k];
    if (c.points == 0) c.least = c.greatest = y[i];
    c.least = std::min(c.least, y[i]);
    c.greatest = std::max(c.greatest, y[i]);
    const double before = y[i] - c.mean;
    c.mean += before / static_cast<double>(++c.points);
    squares[k] += before * (y[i] - c.mean);
  }
  for (std::size_t k = 0; k < columns; ++k) {
    all[k].left = edge(left, right, columns, k);
    all[k].right = edge(left, right, columns, k + 1);
    if (all[k].points > 0) all[k].deviation = std::sqrt(squares[k] / static_cast<double>(all[k].points));
  }
  std::erase_if(all, [](const column& c) { return c.points == 0; });
  return all;
}

std::vector<spot> means_of(const std::vector<double>& x, const std::vector<double>& y, const std::vector<double>& z,
                           const raster& r) {
  std::vector<double> mean(r.columns * r.rows + 1), points(mean.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    const std::size_t s = spot_of(x[i], y[i], r);
    mean[s] += (z[i] - mean[s]) / ++points[s];
  }
  std::vector<spot> filled;
  for (std::size_t s = 0; s < r.columns * r.rows; ++s) {
    if (points[s] == 0) continue;
    const std::size_t c = s % r.columns, l = s / r.columns;
    filled.push_back({edge(r.left, r.right, r.columns, c), edge(r.left, r.right, r.columns, c + 1),
                      edge(r.bottom, r.top, r.rows, l), edge(r.bottom, r.top, r.rows, l + 1), mean[s]});
  }
  return filled;
}

}  // namespace program
