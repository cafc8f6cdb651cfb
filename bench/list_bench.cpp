// The point list: adding points, removal of outliers, mean point, removal of the first point, sorting,
// and the extraction of a chain.
#include <algorithm>
#include <cmath>

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

// Points in order with noise, one in so many far off; or in random order. The noise is a power of two: both programs
// must draw the same points, whether they fuse products and sums or not.
template <bool Sorted, int OneIn = 100, int Noise = -2>
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
        p.y = std::ldexp(r.uniform(), Noise) + (r.below(OneIn) == 0 ? 9.0 : 0.0);
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
using noisy_inputs = list_inputs<true, 5>;
using chain_inputs = list_inputs<true, 5, -8>;
using random_inputs = list_inputs<false>;

// Points that are added one by one to an empty list.
struct building_inputs {
  explicit building_inputs(long size) : n(std::size_t(size)), x(random_values(n, 35)), y(random_values(n, 36)) {}
  std::size_t n;
  static constexpr int rotation = 1;
  values x, y;
};

void add_building(long n) {
  row<building_inputs> r("add, point by point", n,
                         {0, (16.0 + sizeof(vector)) * double(n), traffic::copy, 16.0 * double(n)});
  r.agree({0}).note("our points are 24 bytes; no room is reserved");
  r.ours([](building_inputs& in, int) {
    vectormat l;
    for (std::size_t k = 0; k < in.n; ++k) l.add(vector(in.x[k], in.y[k]));
    return l;
  });
  r.peer("other", "std::vector", [](building_inputs& in, int) {
    point_vector v;
    for (std::size_t k = 0; k < in.n; ++k) v.points.push_back({in.x[k], in.y[k]});
    return v;
  });
  r.peer("other", "std::vector, 24-byte points", [](building_inputs& in, int) {
    wide_vector v;
    for (std::size_t k = 0; k < in.n; ++k) v.points.push_back({0, in.x[k], in.y[k]});
    return v;
  });
}

constexpr double limit = 4;

template <class Inputs>
void add_delete_errors(const std::string& operation, long n) {
  row<Inputs> r(operation, n, {14.0 * double(n), 2.0 * sizeof(vector) * double(n), traffic::move});
  r.agree({0}).note("our points are 24 bytes");
  r.ours(
      [](Inputs & in, int i) -> auto& {
        in.ours[std::size_t(i)].DeleteErrors(limit);
        return in.ours[std::size_t(i)];
      },
      Inputs::restore_ours);
  r.peer(
      "other", "loops, erase", [](Inputs & in, int i) -> auto& {
        std::vector<point>& p = in.peers[std::size_t(i)].points;
        const long n = long(p.size());
        for (long k = 0; k < n; ++k) {
          const long first = std::max(k - 5, 0L), last = std::min(k + 5, n - 1);
          double sum = 0;
          for (long j = first; j <= last; ++j) sum += p[std::size_t(j)].y;
          const double d = p[std::size_t(k)].y - sum / double(last - first + 1);
          if (d * d > limit) p[std::size_t(k)].x = -1;
        }
        p.erase(std::remove_if(p.begin(), p.end(), [](const point& q) { return q.x == -1; }), p.end());
        p.shrink_to_fit();
        return in.peers[std::size_t(i)];
      },
      Inputs::restore_peers);
  r.plain(
      [](Inputs & in, int i) -> auto& {
        plain::delete_errors(in.plain[std::size_t(i)].list, limit);
        return in.plain[std::size_t(i)];
      },
      Inputs::restore_plain);
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
  r.peer("other", "loop", [](random_inputs& in, int i) { return mean(in.original_points[std::size_t(i)].points); });
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
        std::sort(v.begin(), v.end(),
                  [](const point& a, const point& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
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

// A chain along the x axis with points far off, which stay in the list.
struct chain {
  std::unique_ptr<vectormat> found;
};
values values_of(const chain& c) { return bench::values_of(*c.found); }

void add_findline(long n) {
  // The angle of each point, and four sums and the line through the chain for those that join.
  row<chain_inputs> r("findline", n, {30.0 * double(n), 3.0 * sizeof(vector) * double(n), traffic::move});
  r.agree({1e-12}).note("the direction is fitted anew with each point");
  r.ours([](chain_inputs& in,
            int i) { return chain{std::unique_ptr<vectormat>(in.ours[std::size_t(i)].findline(vector(1, 0)))}; },
         chain_inputs::restore_ours);
  r.peer(
      "other", "loop, running sums",
      [](chain_inputs& in, int i) {
        std::vector<point>& from = in.peers[std::size_t(i)].points;
        point_vector found;
        double sums[5] = {}, tolerance = 0.2, slope = 0;
        const auto join = [&](point& p) {
          found.points.push_back(p);
          const double terms[] = {1, p.x, p.x * p.x, p.y, p.x * p.y};
          for (int k = 0; k < 5; ++k) sums[k] += terms[k];
          p.x = -1;
        };
        join(from[0]);
        for (std::size_t k = 2; k < from.size(); ++k) {
          const double x = from[k].x - found.points.back().x, y = from[k].y - found.points.back().y;
          if (std::fabs(std::atan2(y - slope * x, x + slope * y)) >= tolerance) continue;
          join(from[k]);
          if (found.points.size() < 10) continue;
          slope = (sums[0] * sums[4] - sums[1] * sums[3]) / (sums[0] * sums[2] - sums[1] * sums[1]);
          tolerance = 0.05;
        }
        from.erase(std::remove_if(from.begin(), from.end(), [](const point& q) { return q.x == -1; }), from.end());
        return found;
      },
      chain_inputs::restore_peers);
  if (n <= 1000)
    r.plain(
        [](chain_inputs& in, int i) {
          plain_list found;
          plain::find_line(in.plain[std::size_t(i)].list, {1, 0}, found.list);
          return found;
        },
        chain_inputs::restore_plain);
}

}  // namespace

void add_lists() {
  for (long n : {1000, 10000, 100000, 1000000, 10000000}) add_building(n);
  for (long n : {1000, 100000}) add_delete_errors<sorted_inputs>("DeleteErrors", n);
  for (long n : {1000, 100000}) add_delete_errors<noisy_inputs>("DeleteErrors, one in five off", n);
  for (long n : {1000, 100000}) add_findline(n);
  add_average(1000);
  add_average(1000000);
  add_removal(1000);
  add_removal(100000);
  add_sort(200);
  add_sort(2000);
  add_sort(20000);
}

}  // namespace bench
