// The point list: removal of outliers, mean point, removal of the first point, sorting.
#include <algorithm>

#include "inputs.h"
#include "plain/list.h"

namespace bench {

namespace {

using point = plain::vec2;

values values_of_points(const std::vector<point>& v) {
  values r;
  for (const point& p : v) {
    r.push_back(p.x);
    r.push_back(p.y);
  }
  return r;
}

// What users have instead of a vectormat: a std::vector of two numbers a point.
struct point_vector {
  std::vector<point> points;
};
values values_of(const point_vector& v) { return values_of_points(v.points); }

// The same with the size of a vector, where the memory is what counts.
struct wide_point {
  double tag, x, y;
};
static_assert(sizeof(wide_point) == sizeof(vector));
struct wide_vector {
  std::vector<wide_point> points;
};
values values_of(const wide_vector& v) {
  values r;
  for (const wide_point& p : v.points) {
    r.push_back(p.x);
    r.push_back(p.y);
  }
  return r;
}

struct plain_list {
  plain::point_list list;
};
[[maybe_unused]] values values_of(const plain_list& l) { return values_of_points(l.list.points); }

// Points along a wave with noise, one in a hundred far off; or in random order.
template <bool Sorted>
struct list_inputs {
  explicit list_inputs(long size) : n(size), rotation(rotation_for(24.0 * double(n))) {
    for (int i = 0; i < rotation; ++i) {
      test::random_source r(30 + std::uint64_t(i));
      vectormat l;
      l.points = new_vector(index(n));
      l.count = l.capacity = index(n);
      point_vector v;
      wide_vector w;
      for (long k = 0; k < n; ++k) {
        point p;
        p.x = Sorted ? double(k) : r.uniform();
        p.y = 0.3 * r.uniform() + (r.below(100) == 0 ? 9.0 : 0.0);
        l.points[k] = vector(p.x, p.y);
        v.points.push_back(p);
        w.points.push_back({0, p.x, p.y});
      }
      original_wide.push_back(w);
      original.push_back(l);
      original_points.push_back(v);
    }
    ours = original;
    peers = original_points;
    wide = original_wide;
    plain.resize(original.size());
  }
  static void restore_ours(list_inputs& in) { in.ours = in.original; }
  static void restore_peers(list_inputs& in) { in.peers = in.original_points; }
  static void restore_wide(list_inputs& in) { in.wide = in.original_wide; }
  static void restore_plain(list_inputs& in) {
    for (std::size_t i = 0; i < in.plain.size(); ++i) {
      in.plain[i].list = {in.original_points[i].points, index(in.n)};
    }
  }
  long n;
  int rotation;
  std::vector<vectormat> original, ours;
  std::vector<point_vector> original_points, peers;
  std::vector<wide_vector> original_wide, wide;
  std::vector<plain_list> plain;
};

using sorted_inputs = list_inputs<true>;
using random_inputs = list_inputs<false>;

constexpr double limit = 4;

void add_delete_errors(long n) {
  row<sorted_inputs> r("DeleteErrors", n,
                       {14.0 * double(n), 2.0 * sizeof(vector) * double(n), traffic::move});
  r.agree({0}).note("our points are 24 bytes");
  r.ours(
      [](sorted_inputs & in, int i) -> auto& {
        in.ours[std::size_t(i)].DeleteErrors(limit);
        return in.ours[std::size_t(i)];
      },
      sorted_inputs::restore_ours);
  r.peer(
      "other", "loops, erase", [](sorted_inputs & in, int i) -> auto& {
        std::vector<point>& p = in.peers[std::size_t(i)].points;
        const long n = long(p.size());
        for (long k = 0; k < n; ++k) {
          const long first = std::max(k - 5, 0L), last = std::min(k + 5, n - 1);
          double sum = 0;
          for (long j = first; j <= last; ++j) sum += p[std::size_t(j)].y;
          const double d = p[std::size_t(k)].y - sum / double(last - first + 1);
          if (d * d > limit) p[std::size_t(k)].x = -1;
        }
        p.erase(std::remove_if(p.begin(), p.end(), [](const point& q) { return q.x == -1; }),
                p.end());
        p.shrink_to_fit();
        return in.peers[std::size_t(i)];
      },
      sorted_inputs::restore_peers);
  r.plain(
      [](sorted_inputs & in, int i) -> auto& {
        plain::delete_errors(in.plain[std::size_t(i)].list, limit);
        return in.plain[std::size_t(i)];
      },
      sorted_inputs::restore_plain);
}

template <class Point>
point mean(const std::vector<Point>& v) {
  point s;
  for (const Point& p : v) {
    s.x += p.x;
    s.y += p.y;
  }
  return {s.x / double(v.size()), s.y / double(v.size())};
}

template <class Point>
void rotate_by_erase(std::vector<Point>& v) {
  const Point first = v.front();
  v.erase(v.begin());
  v.push_back(first);
}

void add_average(long n) {
  row<random_inputs> r("average", n, {2.0 * double(n), sizeof(vector) * double(n), traffic::read});
  r.agree({1e-9}).note("our points are 24 bytes");
  r.ours([](random_inputs& in, int i) { return in.original[std::size_t(i)].average(); });
  r.peer("other", "loop",
         [](random_inputs& in, int i) { return mean(in.original_points[std::size_t(i)].points); });
  r.peer("other", "loop, 24-byte points",
         [](random_inputs& in, int i) { return mean(in.original_wide[std::size_t(i)].points); });
  r.plain([](random_inputs& in, int i) { return plain::average(in.plain[std::size_t(i)].list); },
          random_inputs::restore_plain);
}

// The first point is removed and appended again, so that the length stays.
void add_removal(long n) {
  row<random_inputs> r("del(0)", n, {0, 2.0 * sizeof(vector) * double(n), traffic::move});
  r.agree({0}).note("our points are 24 bytes");
  r.ours(
      [](random_inputs & in, int i) -> auto& {
        vectormat& l = in.ours[std::size_t(i)];
        const vector first = l.points[0];
        l.del(0);
        l.add(first);
        return l;
      },
      random_inputs::restore_ours);
  r.peer(
      "other", "vector erase", [](random_inputs & in, int i) -> auto& {
        rotate_by_erase(in.peers[std::size_t(i)].points);
        return in.peers[std::size_t(i)];
      },
      random_inputs::restore_peers);
  r.peer(
      "other", "vector erase, 24-byte points", [](random_inputs & in, int i) -> auto& {
        rotate_by_erase(in.wide[std::size_t(i)].points);
        return in.wide[std::size_t(i)];
      },
      random_inputs::restore_wide);
  r.plain(
      [](random_inputs & in, int i) -> auto& {
        plain::point_list& l = in.plain[std::size_t(i)].list;
        const point first = l.points.front();
        plain::del(l, 0);
        plain::add(l, first);
        return in.plain[std::size_t(i)];
      },
      random_inputs::restore_plain);
}

void add_sort(long n) {
  row<random_inputs> r("sort", n, {0, 2.0 * sizeof(vector) * double(n), traffic::move});
  r.agree({0});
  r.ours(
      [](random_inputs & in, int i) -> auto& {
        in.ours[std::size_t(i)].sort();
        return in.ours[std::size_t(i)];
      },
      random_inputs::restore_ours);
  r.peer(
      "other", "std::sort", [](random_inputs & in, int i) -> auto& {
        std::vector<point>& v = in.peers[std::size_t(i)].points;
        std::sort(v.begin(), v.end(), [](const point& a, const point& b) {
          return a.x < b.x || (a.x == b.x && a.y < b.y);
        });
        return in.peers[std::size_t(i)];
      },
      random_inputs::restore_peers);
  if (n <= 2000) {
    r.plain(
        [](random_inputs & in, int i) -> auto& {
          plain::bubble_sort(in.plain[std::size_t(i)].list);
          return in.plain[std::size_t(i)];
        },
        random_inputs::restore_plain);
  }
}

}  // namespace

void add_lists() {
  add_delete_errors(1000);
  add_delete_errors(100000);
  add_average(1000);
  add_average(1000000);
  add_removal(1000);
  add_removal(100000);
  add_sort(200);
  add_sort(2000);
  add_sort(20000);
}

}  // namespace bench
