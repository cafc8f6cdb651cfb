// Random sequences of operations on a point list and on its plain model.
#include <gtest/gtest.h>
#include <tessarn/vectors.h>

#include <memory>
#include <utility>
#include <vector>

#include "support/lists.h"

namespace {

using test::lib;
using test::same;

struct pair_of_lists {
  vectormat lib;
  plain::point_list plain;
};

void step(test::random_source& r, std::vector<pair_of_lists>& lists) {
  pair_of_lists& a = lists[r.below(static_cast<std::uint32_t>(lists.size()))];
  pair_of_lists& b = lists[r.below(static_cast<std::uint32_t>(lists.size()))];
  switch (r.below(22)) {
    case 0: {
      // A burst, so that the storage grows.
      const std::uint32_t n = r.below(40) == 0 ? 1500 : 12;
      for (std::uint32_t i = 0; i < n; ++i) {
        const plain::vec2 p = r.below(4) == 0 ? test::draw_vec2(r) : plain::vec2{double(i), test::draw_finite(r)};
        vector v = lib(p);
        a.lib.add(v);
        plain::add(a.plain, p);
      }
      break;
    }
    case 1:
    case 2:
    case 3:
    case 4: {
      const plain::vec2 p = test::draw_vec2(r);
      vector v = lib(p);
      a.lib += v;
      plain::add(a.plain, p);
      break;
    }
    case 5:
      if (a.lib.count > 0) {
        const std::uint32_t i = r.below(a.lib.count);
        a.lib.add(a.lib.points[i]);
        plain::add(a.plain, plain::vec2(a.plain.points[i]));
      }
      break;
    case 6:
    case 7: {
      const std::uint32_t i = r.below(a.lib.count + 3);
      a.lib.del(i);
      plain::del(a.plain, i);
      break;
    }
    case 8: {
      const std::uint32_t i = r.below(a.lib.count + 3);
      a.lib -= i;
      plain::del(a.plain, i);
      break;
    }
    case 9: {
      const double k = test::draw(r);
      a.lib *= k;
      plain::scale_y(a.plain, k);
      break;
    }
    case 10:
      a.lib.flip();
      plain::flip(a.plain);
      break;
    case 11:
      if (a.lib.count < 400) {
        a.lib.sort();
        plain::bubble_sort(a.plain);
      }
      break;
    case 12: ASSERT_TRUE(same(a.lib.average(), plain::average(a.plain))); break;
    case 13: {
      vector v;
      v = a.lib;
      ASSERT_TRUE(same(v, plain::centroid(a.plain)));
      break;
    }
    case 14:
      if (a.lib.count < 200) {
        ASSERT_TRUE(same(a.lib.avdir(), plain::mean_direction(a.plain)));
      }
      break;
    case 15: {
      const double limit = r.below(3) == 0 ? 0.0 : r.uniform(0, 400);
      a.lib.DeleteErrors(limit);
      plain::delete_errors(a.plain, limit);
      break;
    }
    case 16:
      if (a.lib.count < 200) {
        const plain::vec2 dir = test::draw_vec2(r);
        plain::point_list expected;
        const bool any = plain::find_line(a.plain, dir, expected);
        std::unique_ptr<vectormat> found(a.lib.findline(lib(dir)));
        ASSERT_EQ(found != nullptr, any);
        if (any) {
          ASSERT_TRUE(same(*found, expected));
          b.lib = *found;
          b.plain = expected;
        }
      }
      break;
    case 17:
      a.lib = b.lib;
      a.plain = plain::point_list(b.plain);
      break;
    case 18: {
      vectormat copy(b.lib);
      a.lib = std::move(copy);
      a.plain = plain::point_list(b.plain);
      break;
    }
    case 19:
      if (&a != &b) {
        a.lib = std::move(b.lib);
        a.plain = std::exchange(b.plain, plain::point_list{});
      }
      break;
    case 20:
      if (r.below(4) == 0) {
        a.lib.empty();
        plain::empty(a.plain);
      }
      break;
    default:
      if (a.lib.count > 0) {
        const std::uint32_t i = r.below(a.lib.count);
        const plain::vec2 p = test::draw_vec2(r);
        a.lib.points[i] = lib(p);
        a.plain.points[i] = p;
      }
      break;
  }
}

TEST(VectormatModel, RandomSequences) {
  for (std::uint64_t seed = 0; seed < 150; ++seed) {
    test::random_source r(600 + seed);
    std::vector<pair_of_lists> lists(3);
    for (int i = 0; i < 200; ++i) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(i));
      ASSERT_NO_FATAL_FAILURE(step(r, lists));
      for (const pair_of_lists& l : lists) {
        ASSERT_TRUE(same(l.lib, l.plain));
      }
    }
  }
}

}  // namespace
