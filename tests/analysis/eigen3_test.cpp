// Eigenvalues and eigenvectors of small symmetric matrices, judged by numbers of 600 bits: A v - lambda v, the
// orthogonality of the vectors, and the characteristic polynomial.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "../support/random.h"
#include "analysis/eigen3.h"

#if defined(TESTS_HAVE_GMP)
#include <gmpxx.h>
#endif

namespace {

using namespace tessarn::analysis;
using test::random_source;

TEST(Eigen3, SortsAndKeepsADiagonalMatrix) {
  const doubled a[3][3] = {{3.0, 0.0, 0.0}, {0.0, -1.0, 0.0}, {0.0, 0.0, 2.0}};
  const eigen_system<3> e = eigen_of_symmetric(a);
  EXPECT_EQ(e.values[0].high, -1);
  EXPECT_EQ(e.values[1].high, 2);
  EXPECT_EQ(e.values[2].high, 3);
  EXPECT_EQ(e.vectors[0][1].high, 1);
  EXPECT_EQ(e.vectors[1][2].high, 1);
  EXPECT_EQ(e.vectors[2][0].high, 1);
}

// Equal values keep the order of their columns.
TEST(Eigen3, TheLowerTriangleIsNotRead) {
  const double nothing = std::numeric_limits<double>::quiet_NaN();
  const doubled a[3][3] = {{2.0, 1.0, 0.0}, {nothing, 2.0, 0.0}, {nothing, nothing, 3.0}};
  const eigen_system<3> e = eigen_of_symmetric(a);
  EXPECT_EQ(e.values[0].high, 1);
  EXPECT_EQ(e.values[1].high, 3);
  EXPECT_EQ(e.values[2].high, 3);
}

TEST(Eigen3, EndsForEverything) {
  random_source random(1700);
  for (int i = 0; i < 2000; ++i) {
    doubled a[4][4];
    for (auto& row : a)
      for (doubled& v : row) v = random.hostile();
    (void)eigen_of_symmetric(a);
  }
}

#if defined(TESTS_HAVE_GMP)

constexpr int bits = 600;
using number = mpf_class;

number exact(doubled v) { return number(v.high, bits) + v.low; }

// A number of a kind: ordinary, small integers, of very different sizes, or near 1.
doubled draw(random_source& random, int kind) {
  switch (kind) {
    case 0: return exact_sum(random.uniform(), random.uniform() * 0x1p-54);
    case 1: return static_cast<double>(random.below(5)) - 2;
    case 2: return std::ldexp(random.uniform(), static_cast<int>(random.below(80)) - 40);
    default: return 1 + 0x1p-45 * random.uniform();
  }
}

template <int N>
void check(const doubled (&a)[N][N]) {
  const eigen_system<N> e = eigen_of_symmetric(a);
  double largest = 0;
  for (int r = 0; r < N; ++r)
    for (int c = r; c < N; ++c) largest = std::fmax(largest, magnitude(a[r][c]));
  for (int k = 0; k < N; ++k) {
    if (k > 0) {
      EXPECT_TRUE(exact(e.values[k - 1]) <= exact(e.values[k]));
    }
    for (int r = 0; r < N; ++r) {
      number off = -exact(e.values[k]) * exact(e.vectors[k][r]);
      for (int c = 0; c < N; ++c) off += exact(r < c ? a[r][c] : a[c][r]) * exact(e.vectors[k][c]);
      EXPECT_LE(std::fabs(off.get_d()), largest * 0x1p-99) << N;
    }
    for (int j = 0; j <= k; ++j) {
      number product(j == k ? -1 : 0, bits);
      for (int c = 0; c < N; ++c) product += exact(e.vectors[j][c]) * exact(e.vectors[k][c]);
      EXPECT_LE(std::fabs(product.get_d()), 0x1p-99) << N;
    }
  }
}

// What A v - lambda v says of each value and vector is, with orthogonal vectors, a proof of both bounds.
template <int N>
void check_many(std::uint64_t seed) {
  random_source random(seed);
  const char* told = std::getenv("TESSARN_ANALYSIS_ROUNDS");
  const int count = told ? std::atoi(told) : 4000;
  for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
    doubled a[N][N], columns[N][N];
    for (int r = 0; r < N; ++r)
      for (int c = 0; c < N; ++c) columns[r][c] = a[r][c] = draw(random, i % 4);
    // Every second matrix is a sum of few squares, as scatter matrices are, so that it may be singular.
    const int squares = 1 + i / 8 % N;
    for (int r = 0; i / 4 % 2 == 1 && r < N; ++r)
      for (int c = 0; c < N; ++c) {
        a[r][c] = 0.0;
        for (int k = 0; k < squares; ++k) a[r][c] += columns[k][r] * columns[k][c];
      }
    check(a);
  }
}

TEST(Eigen3, ManyBoundsHoldForThree) { check_many<3>(1701); }
TEST(Eigen3, ManyBoundsHoldForFour) { check_many<4>(1702); }

// Entries at both ends of the range of a double.
TEST(Eigen3, ScalesByPowersOfTwo) {
  for (const double s : {0x1p-900, 0x1p900}) {
    const doubled a[3][3] = {{2 * s, 1 * s, 0.0}, {0.0, 2 * s, 1 * s}, {0.0, 0.0, 2 * s}};
    const eigen_system<3> e = eigen_of_symmetric(a);
    EXPECT_EQ(e.values[1].high, 2 * s);
    EXPECT_EQ(e.values[2].high, (2 + std::sqrt(2.0)) * s);
    check(a);
  }
}

#endif

}  // namespace
