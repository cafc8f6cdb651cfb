// Sorting of the point list.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "core/storage.h"
#include "tessarn/vectors.h"

using tessarn::real;

namespace {

struct coordinates {
  real x, y;
};

bool belongs_before(const coordinates& a, const coordinates& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }

bool is_left(const coordinates& a, const coordinates& b) { return a.x < b.x; }

bool is_nan(real v) { return v != v; }

bool has_nan(const coordinates* points, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    if (is_nan(points[i].x) || is_nan(points[i].y)) return true;
  return false;
}

// From this number of points on a radix sort costs less than comparisons.
constexpr std::size_t radix_sort_from = 400;

constexpr std::size_t digits = sizeof(real);
constexpr std::size_t digit_values = 256;

// An integer that is ordered as x is, with one value for both zeros: the sign bit is inverted, and for negative numbers
// all other bits, too.
std::uint64_t key_of(real x) {
  const real v = x + 0;
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const std::uint64_t sign = std::uint64_t{1} << 63;
  return (bits & sign) != 0 ? ~bits : bits | sign;
}

std::size_t digit(std::uint64_t key, std::size_t d) { return (key >> (8 * d)) & (digit_values - 1); }

// Radix sort of n points by x, a byte of the key at a time from the lowest: each pass is stable, so points of equal x
// keep their order. A byte that all points share needs no pass. The result is in points or in other, which is returned.
coordinates* sorted_by_x(coordinates* points, coordinates* other, std::size_t n) {
  std::uint32_t numbers[digits][digit_values] = {};
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint64_t key = key_of(points[i].x);
    for (std::size_t d = 0; d < digits; ++d) ++numbers[d][digit(key, d)];
  }
  for (std::size_t d = 0; d < digits; ++d) {
    std::uint32_t* first = numbers[d];
    if (first[digit(key_of(points[0].x), d)] == n) continue;
    std::uint32_t before = 0;
    for (std::size_t v = 0; v < digit_values; ++v) before += std::exchange(first[v], before);
    for (std::size_t i = 0; i < n; ++i) other[first[digit(key_of(points[i].x), d)]++] = points[i];
    std::swap(points, other);
  }
  return points;
}

// Sorts each run of points of equal x by y; no point passes one whose y is NaN.
void sort_ties_by_y(coordinates* points, std::size_t n) {
  for (std::size_t i = 0, end; i < n; i = end) {
    end = i + 1;
    if (is_nan(points[i].y)) continue;
    while (end < n && points[end].x == points[i].x && !is_nan(points[end].y)) ++end;
    if (end - i > 1) std::stable_sort(points + i, points + end, belongs_before);
  }
}

// Sorts n points without a NaN among their x. The result is in points or in other, which is returned.
coordinates* sorted_run(coordinates* points, coordinates* other, std::size_t n) {
  if (n >= radix_sort_from)
    points = sorted_by_x(points, other, n);
  else
    std::stable_sort(points, points + n, is_left);
  sort_ties_by_y(points, n);
  return points;
}

// Gives the list that a bubble sort gives. That exchanges neighbours only, and none where a comparison meets a NaN. So
// a point with a NaN x stays where it is, and no other passes it: the points between two of them are sorted by
// themselves. There, points of different x end in the order of x, and of equal x those before a point with a NaN y stay
// before it.
void sort_between_nans(coordinates* points, coordinates* other, std::size_t n) {
  for (std::size_t first = 0, end; first < n; first = end + 1) {
    for (end = first; end < n && !is_nan(points[end].x);) ++end;
    const coordinates* const sorted = sorted_run(points + first, other + first, end - first);
    if (sorted != points + first) std::copy_n(sorted, end - first, points + first);
  }
}

}  // namespace

// Works on a copy of the coordinates, without the virtual table pointers. Without NaN the order is a weak ordering, and
// a bubble sort never exchanges equals: any stable sort gives its list.
void vectormat::sort() {
  if (count < 2) return;
  const std::size_t n = count;
  const bool by_radix = n >= radix_sort_from;
  using tessarn::detail::checked_product;
  const std::unique_ptr<coordinates[]> packed(new coordinates[by_radix ? checked_product(2, n) : n]);
  coordinates* sorted = packed.get();
  coordinates* const other = by_radix ? sorted + n : nullptr;
  for (std::size_t i = 0; i < n; ++i) sorted[i] = {points[i].x, points[i].y};
  if (has_nan(sorted, n))
    sort_between_nans(sorted, other, n);
  else if (by_radix)
    sorted = sorted_run(sorted, other, n);
  else
    std::stable_sort(sorted, sorted + n, belongs_before);
  for (std::size_t i = 0; i < n; ++i) {
    points[i].x = sorted[i].x;
    points[i].y = sorted[i].y;
  }
}
