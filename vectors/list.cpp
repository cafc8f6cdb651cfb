// The point list: storage and sums.
#include <algorithm>
#include <utility>

#include "tessarn/vectors.h"
#include "vectors/point_array.h"

using tessarn::real;
using tessarn::detail::copy_points;
using tessarn::detail::extend_points;
using tessarn::detail::release_points;

namespace {

struct coordinates {
  real x, y;
};

// Processors read ahead by themselves, but only to the end of a page. A loop over a long list therefore asks for a
// later page in time, once every half page; 84 points are about half a page, and a multiple of four points. For lists
// of a million points that no cache holds, doing without takes 1.2 to 1.6 times as long.
constexpr std::size_t half_page = 84, points_ahead = 16 * half_page;

// Prefetches the page that points_ahead points after the given one lies in, if there are so many among the n from it
// on.
inline void read_ahead(const vector* points, std::size_t n) noexcept {
#if defined(__GNUC__) || defined(__clang__)
  if (n > points_ahead) __builtin_prefetch(points + points_ahead);
#else
  (void)points, (void)n;
#endif
}

}  // namespace

// The running sums stand in this vector: a point of the list itself takes part with the sums before it.
vector vector::operator=(vectormat& m) noexcept {
  x = y = 0;
  for (tessarn::ulong i = 0; i < m.count; ++i) {
    x += m.points[i].x;
    y += m.points[i].y;
  }
  x /= static_cast<real>(m.count);
  y /= static_cast<real>(m.count);
  return *this;
}

vectormat::vectormat(const vectormat& o) : vectormat() {
  if (o.points == nullptr) return;
  capacity = std::max(o.capacity, o.count);  // the fields are public
  points = new vector[capacity];
  copy_points(o.points, o.count, points);
  count = o.count;
}

vectormat& vectormat::operator=(const vectormat& o) {
  if (this != &o) *this = vectormat(o);
  return *this;
}

vectormat& vectormat::operator=(vectormat&& o) noexcept {
  if (this == &o) return *this;
  release_points(points);
  points = o.points;
  count = o.count;
  capacity = o.capacity;
  o.forget();
  return *this;
}

vectormat::~vectormat() { release_points(points); }

void vectormat::empty() {
  release_points(points);
  forget();
}

void vectormat::add(vector& v) {
  const coordinates added = {v.x, v.y};  // v may be a point of this list, which growing releases
  if (count >= capacity) {
    const tessarn::ulong larger = tessarn::detail::next_capacity(count);
    if (capacity != count || !extend_points(points, count, larger))
      points = tessarn::detail::grow_points(points, count, larger);
    capacity = larger;
  }
  points[count].x = added.x;
  points[count].y = added.y;
  ++count;
}

void vectormat::operator+=(vector& v) { add(v); }

void vectormat::append(const vector* p, tessarn::ulong n) {
  for (tessarn::ulong i = 0; i < n; ++i) add(p[i]);
}

void vectormat::reserve(tessarn::ulong n) {
  if (n <= std::max(capacity, count)) return;
  vector* const grown = new vector[n];
  copy_points(points, count, grown);
  release_points(points);
  points = grown;
  capacity = n;
}

void vectormat::del(tessarn::ulong i) {
  if (count == 0) return;
  --count;
  if (i < count) copy_points(points + i + 1, count - i, points + i);
  points[count].x = points[count].y = 0;
}

void vectormat::operator-=(tessarn::ulong i) { del(i); }

void vectormat::operator*=(real k) {
  for (tessarn::ulong i = 0; i < count; ++i) points[i].y *= k;
}

void vectormat::flip() {
  for (tessarn::ulong i = 0; i < count; ++i) std::swap(points[i].x, points[i].y);
}

vector vectormat::average() {
  real even_x = 0, even_y = 0, odd_x = 0, odd_y = 0;
  const std::size_t paired = count - count % 4;
  for (std::size_t first = 0; first < paired; first += half_page) {
    read_ahead(points + first, paired - first);
    const std::size_t end = std::min(first + half_page, paired);
    // Two pairs a round: one pair a round, and the compiler mixes the coordinates of both.
    for (std::size_t i = first; i < end; i += 4) {
      even_x += points[i].x;
      even_y += points[i].y;
      odd_x += points[i + 1].x;
      odd_y += points[i + 1].y;
      even_x += points[i + 2].x;
      even_y += points[i + 2].y;
      odd_x += points[i + 3].x;
      odd_y += points[i + 3].y;
    }
  }
  real sum_x = even_x + odd_x;
  real sum_y = even_y + odd_y;
  for (std::size_t i = paired; i < count; ++i) {
    sum_x += points[i].x;
    sum_y += points[i].y;
  }
  const real r = 1 / static_cast<real>(count);
  return {sum_x * r, sum_y * r};
}
