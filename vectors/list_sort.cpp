// Sorting of the point list.
#include <cstring>
#include <algorithm>
#include <memory>
#include <utility>

#include "tessarn/vectors.h"

using tessarn::real;

namespace {

struct coordinates {
  real x, y;
};

bool belongs_after(const vector& a, const vector& b) { return a.x > b.x || (a.x == b.x && a.y > b.y); }

bool belongs_before(const coordinates& a, const coordinates& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }

bool has_nan(const vector* points, tessarn::ulong n) {
  for (tessarn::ulong i = 0; i < n; ++i)
    if (points[i].x != points[i].x || points[i].y != points[i].y) return true;
  return false;
}

// The defined order of a list with NaN, where comparisons are not transitive and no faster sort agrees.
void bubble_sort(vector* points, tessarn::ulong n) {
  for (bool swapped = true; swapped;) {
    swapped = false;
    for (tessarn::ulong j = 0; j + 1 < n; ++j) {
      if (!belongs_after(points[j], points[j + 1])) continue;
      std::swap(points[j].x, points[j + 1].x);
      std::swap(points[j].y, points[j + 1].y);
      swapped = true;
    }
  }
}

// From this number of points on the passes over the digits cost less than comparisons.
constexpr std::size_t digit_sorted = 400;

constexpr std::size_t digits = sizeof(real);
constexpr std::size_t digit_values = 256;

// A number that is ordered as x is; the same for both zeros.
std::uint64_t key_of(real x) {
  const real v = x + 0;
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const std::uint64_t sign = std::uint64_t{1} << 63;
  return (bits & sign) != 0 ? ~bits : bits | sign;
}

std::size_t digit(std::uint64_t key, std::size_t d) { return (key >> (8 * d)) & (digit_values - 1); }

// Sorts n points by x, equal ones in their order, digit by digit from the last: each pass is stable. A digit that all
// points share needs none. The result stands in points or in other, which is returned.
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

// Sorts the points of equal x, which stand together, by y.
void sort_equals(coordinates* points, std::size_t n) {
  for (std::size_t i = 0, end; i < n; i = end) {
    for (end = i + 1; end < n && points[end].x == points[i].x;) ++end;
    if (end - i > 1) std::stable_sort(points + i, points + end, belongs_before);
  }
}

}  // namespace

// Without NaN the order is a weak ordering, and a bubble sort never exchanges equals: a stable sort gives the same
// list.
void vectormat::sort() {
  if (count < 2) return;
  if (has_nan(points, count)) return bubble_sort(points, count);
  const std::size_t n = count;
  const bool by_digits = n >= digit_sorted;
  const std::unique_ptr<coordinates[]> packed(new coordinates[by_digits ? 2 * n : n]);
  coordinates* sorted = packed.get();
  for (std::size_t i = 0; i < n; ++i) sorted[i] = {points[i].x, points[i].y};
  if (by_digits) {
    sorted = sorted_by_x(sorted, sorted + n, n);
    sort_equals(sorted, n);
  } else {
    std::stable_sort(sorted, sorted + n, belongs_before);
  }
  for (std::size_t i = 0; i < n; ++i) {
    points[i].x = sorted[i].x;
    points[i].y = sorted[i].y;
  }
}
