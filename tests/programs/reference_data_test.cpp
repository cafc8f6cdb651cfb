// The transcription of the reference data: the certified coefficients must leave the certified
// residual sum of squares. Computed plainly in long double, without the library.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "support/table.h"

namespace {

using program::read_table;
using program::table;

long double power(long double x, int n) {
  long double p = 1;
  for (int i = 0; i < n; ++i) p *= x;
  return p;
}

table data(const std::string& name) { return read_table(EXAMPLE_DATA "/" + name + ".csv", {"x", "y"}, {}); }

long double square_sum(const std::string& name) {
  const table points = data(name), certified = data(name + "_certified");
  long double sum = 0;
  for (std::size_t i = 0; i < points.rows(); ++i) {
    long double r = points.at(i, 1);
    for (std::size_t k = 0; k < certified.rows(); ++k)
      r -= static_cast<long double>(certified.at(k, 1)) * power(points.at(i, 0), static_cast<int>(certified.at(k, 0)));
    sum += r * r;
  }
  return sum;
}

TEST(ReferenceData, Norris) {
  EXPECT_EQ(data("norris").rows(), 36u);
  EXPECT_NEAR(static_cast<double>(square_sum("norris") / 26.6173985294224L), 1, 1e-13);
}

TEST(ReferenceData, Pontius) {
  EXPECT_EQ(data("pontius").rows(), 40u);
  EXPECT_NEAR(static_cast<double>(square_sum("pontius") / 0.155761768796992e-5L), 1, 1e-12);
}

// Exact by construction, up to the rounding of the decimal numbers to double.
TEST(ReferenceData, Wampler) {
  EXPECT_EQ(data("wampler1").rows(), 21u);
  EXPECT_EQ(data("wampler2").rows(), 21u);
  EXPECT_EQ(static_cast<double>(square_sum("wampler1")), 0);
  EXPECT_LT(static_cast<double>(square_sum("wampler2")), 1e-28);
}

TEST(ReferenceData, Water) {
  const table t = data("water");
  ASSERT_EQ(t.rows(), 8u);
  for (std::size_t i = 1; i < t.rows(); ++i) EXPECT_GT(t.at(i, 0), t.at(i - 1, 0));
  EXPECT_EQ(t.at(1, 1), 999.9720);
}

}  // namespace
