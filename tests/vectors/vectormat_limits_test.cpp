// Removal of outliers with the limit exactly at a deviation: a point stays that deviates by no
// more.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "support/lists.h"

namespace {

// The square of what point i deviates by from the mean of its neighbourhood: a true quotient.
double squared_deviation(const std::vector<plain::vec2>& points, std::size_t i) {
  const std::size_t first = i < 5 ? 0 : i - 5, last = std::min(points.size() - 1, i + 5);
  double sum = 0;
  for (std::size_t k = first; k <= last; ++k) sum += points[k].y;
  const double d = points[i].y - sum / static_cast<double>(last - first + 1);
  return d * d;
}

TEST(VectormatLimits, AtTheDeviationOfEachPoint) {
  test::random_source random(161);
  int by_reciprocal = 0;
  for (int round = 0; round < 150; ++round) {
    const std::size_t n = 1 + random.below(round % 10 ? 60 : 700);
    std::vector<plain::vec2> points;
    for (std::size_t i = 0; i < n; ++i) points.push_back({static_cast<double>(i), random.uniform(-3, 3)});
    for (std::size_t i = 0; i < n; i += 1 + n / 60) {
      const double limit = squared_deviation(points, i);
      if (limit == 0) continue;  // no limit
      for (const double at : {limit, std::nextafter(limit, 0.0)}) {
        vectormat list;
        test::fill(list, points);
        plain::point_list want = test::list_of(points);
        list.DeleteErrors(at);
        plain::delete_errors(want, at);
        ASSERT_TRUE(test::same_points(list, want.points)) << "limit " << test::hex(at) << " of point " << i;
        const bool kept = std::any_of(list.points, list.points + list.count,
                                      [&](const vector& v) { return v.x == static_cast<double>(i); });
        ASSERT_EQ(kept, at == limit);
      }
      const std::size_t first = i < 5 ? 0 : i - 5, last = std::min(n - 1, i + 5);
      double sum = 0;
      for (std::size_t k = first; k <= last; ++k) sum += points[k].y;
      const double d = points[i].y - sum * (1 / static_cast<double>(last - first + 1));
      by_reciprocal += d * d != limit;
    }
  }
  EXPECT_GT(by_reciprocal, 100);  // which the limits tell from the quotient
}

// Every operation on a list without points, with room for them or without.
TEST(EmptyInputs, Lists) {
  vectormat none, emptied;
  for (int i = 0; i < 1500; ++i) {
    vector v(i, 1);
    emptied.add(v);
  }
  while (emptied.count > 0) emptied.del(emptied.count - 1);
  for (vectormat* list : {&none, &emptied}) {
    list->flip();
    *list *= 3.0;
    list->sort();
    EXPECT_TRUE(std::isnan(list->average().x));
    const vector direction = list->avdir();
    EXPECT_EQ(direction.x, 1);
    EXPECT_EQ(direction.y, 0);
    EXPECT_EQ(list->findline(vector(1, 0)), nullptr);
    vector centroid;
    centroid = *list;
    EXPECT_TRUE(std::isnan(centroid.y));
    list->DeleteErrors(1);
    list->DeleteErrors(0);
    EXPECT_EQ(list->count, 0u);
    vector v(1, 2);
    list->add(v);
    EXPECT_EQ(list->count, 1u);
    list->empty();
  }
}

}  // namespace
