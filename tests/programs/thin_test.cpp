// The points that a picture shows of many.
#include "support/thin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <vector>

namespace {

using namespace program;

std::vector<double> noise(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<double> v(n);
  for (double& x : v) x = static_cast<double>(random()) / 4294967296.0;
  return v;
}

const raster panel = spots(0, 1, 0, 1, 200, 100);

TEST(Thin, SpotsHaveTheirSide) {
  EXPECT_EQ(panel.columns, 50u);
  EXPECT_EQ(panel.rows, 25u);
  EXPECT_EQ(spots(0, 1, 0, 1, 1, 1).columns, 1u);
}

TEST(Thin, FewPointsAreAllVisible) {
  const auto x = noise(most_points, 1), y = noise(most_points, 2);
  EXPECT_EQ(visible(x, y, panel).size(), most_points);
}

TEST(Thin, OneOfManyPointsInEverySpot) {
  auto x = noise(20000, 1), y = noise(20000, 2);
  for (double& v : x) v *= 0.5;  // the right half stays empty
  x[7777] = 1;                   // but for one point in its corner
  y[7777] = 1;
  x[8888] = 2;  // outside
  const auto shown = visible(x, y, panel);
  std::set<std::pair<int, int>> filled, drawn_spots;
  for (std::size_t i = 0; i < x.size(); ++i)
    if (x[i] <= 1) filled.insert({std::min(49, int(x[i] * 50)), std::min(24, int(y[i] * 25))});
  for (const std::size_t i : shown) drawn_spots.insert({std::min(49, int(x[i] * 50)), std::min(24, int(y[i] * 25))});
  EXPECT_EQ(drawn_spots, filled);
  EXPECT_EQ(shown.size(), filled.size());
  EXPECT_EQ(filled.size(), 25u * 25u + 1);
  EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
  EXPECT_TRUE(std::binary_search(shown.begin(), shown.end(), 7777u));
  EXPECT_FALSE(std::binary_search(shown.begin(), shown.end(), 8888u));
}

TEST(Thin, PointsOfOneAbscissaOrOrdinate) {
  const std::vector<double> same(most_points + 1, 3.0);
  EXPECT_EQ(visible(same, same, spots(3, 3, 3, 3, 100, 100)).size(), 1u);
  EXPECT_EQ(columns_of(same, same, 3, 3, 10).size(), 1u);
}

TEST(Thin, LegendTellsHowManyAreDrawn) {
  EXPECT_EQ(drawn("points", 7, 7), "points");
  EXPECT_EQ(drawn("points", 3, 7), "points (3 of 7 drawn)");
}

TEST(Thin, ColumnsHoldRangeMeanAndDeviation) {
  const auto columns = columns_of({0.0, 0.5, 2.5, 4.0, 4.1, -1.0, 0.9}, {1, 2, 7, -3, 9, 9, 6}, 0, 4, 4);
  ASSERT_EQ(columns.size(), 3u);  // none in [1, 2), and two points outside
  EXPECT_EQ(columns[0].points, 3u);
  EXPECT_EQ(columns[0].least, 1);
  EXPECT_EQ(columns[0].greatest, 6);
  EXPECT_DOUBLE_EQ(columns[0].mean, 3);
  EXPECT_DOUBLE_EQ(columns[0].deviation, std::sqrt(14.0 / 3));
  EXPECT_EQ(columns[1].left, 2);
  EXPECT_EQ(columns[1].right, 3);
  EXPECT_EQ(columns[1].deviation, 0);
  EXPECT_EQ(columns[2].greatest, -3);  // the right end belongs to the last one
}

TEST(Thin, SpotsHoldTheirMean) {
  const auto filled = means_of({0.1, 0.2, 0.9, 5}, {0.1, 0.2, 0.9, 0}, {1, 2, -7, 100}, {0, 1, 0, 1, 2, 2});
  ASSERT_EQ(filled.size(), 2u);
  EXPECT_DOUBLE_EQ(filled[0].mean, 1.5);
  EXPECT_EQ(filled[0].right, 0.5);
  EXPECT_EQ(filled[1].bottom, 0.5);
  EXPECT_EQ(filled[1].mean, -7);
}

}  // namespace
