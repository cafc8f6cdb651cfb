// Maps and copies to and from Eigen.
#include <tessarn/eigen.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

using tessarn::eigen_map;
using tessarn::from_eigen;

// MatrixXd and MatrixXcd where reals are double; they are long double for Microsoft's ABI and on 32-bit ARM.
using matrix = Eigen::Matrix<tessarn::real, Eigen::Dynamic, Eigen::Dynamic>;
using complex_matrix = Eigen::Matrix<std::complex<tessarn::real>, Eigen::Dynamic, Eigen::Dynamic>;

TEST(Eigen, MapsMatricesWithoutACopy) {
  mat<long double> m{{1, 2, 3}, {4, 5, 6}};
  auto e = eigen_map(m);
  EXPECT_EQ(e.data(), m.getData());
  EXPECT_EQ(e(1, 2), m.get(2, 1));
  e(0, 1) = 9;
  EXPECT_EQ(m.get(1, 0), 9);
  const mat<long double> constant{{1, 2}};
  EXPECT_EQ(eigen_map(constant).sum(), 3);
  sqmat<long double> s{{1, 2}, {3, 4}};
  EXPECT_EQ(eigen_map(s).trace(), 5);
  EXPECT_EQ(eigen_map(std::as_const(s))(1, 0), 3);
  mat<long double> none;
  EXPECT_EQ(eigen_map(none).size(), 0);
}

TEST(Eigen, MapsPointsWithoutACopy) {
  std::vector<vector3d> cloud = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
  auto e = eigen_map(cloud);
  EXPECT_EQ(e.rows(), 3);
  EXPECT_EQ(e.cols(), 3);
  EXPECT_EQ(e(2, 1), 8);
  e.col(2).array() += 1;
  EXPECT_EQ(cloud[1].z, 7);
  const vectormat list{{1, 2}, {3, 4}};
  EXPECT_EQ(eigen_map(list)(1, 0), 3);
  EXPECT_EQ(eigen_map(list).cols(), 2);
  vector3d v(1, 2, 3);
  eigen_map(v) *= 2;
  EXPECT_EQ(v.z, 6);
  std::vector<vector> none;
  EXPECT_EQ(eigen_map(none).rows(), 0);
}

TEST(Eigen, MapsThePartsOfComplexMatrices) {
  mat<cplx> m{{cplx(1, 2), cplx(3, 4)}, {cplx(5, 6), cplx(7, 8)}};
  EXPECT_EQ(tessarn::eigen_real_parts(m)(1, 0), 5);
  EXPECT_EQ(tessarn::eigen_imaginary_parts(m)(0, 1), 4);
  tessarn::eigen_imaginary_parts(m).setZero();
  EXPECT_EQ(m.get(1, 1).im, 0);
  EXPECT_EQ(m.get(1, 1).re, 7);
  sqmat<cplx> s{{cplx(1, 2), cplx(3, 4)}, {cplx(5, 6), cplx(7, 8)}};
  EXPECT_EQ(tessarn::eigen_imaginary_parts(s)(1, 1), 8);
  sqmat<cplx> none;
  EXPECT_EQ(tessarn::eigen_real_parts(none).size(), 0);
}

TEST(Eigen, CopiesBothWays) {
  matrix e(2, 3);
  e << 1, 2, 3, 4, 5, 6;
  const auto m = from_eigen<mat<long double>>(e);
  EXPECT_EQ(m.getWidth(), 3u);
  EXPECT_EQ(m.get(2, 1), 6);
  EXPECT_EQ(from_eigen<mat<long double>>(e * 2).get(0, 0), 2);
  const matrix back = eigen_map(m);
  EXPECT_EQ(back, e);
  EXPECT_EQ(from_eigen<sqmat<long double>>(e.leftCols(2)).get(1, 0), 2);
  complex_matrix z(1, 2);
  z << std::complex<tessarn::real>(1, 2), std::complex<tessarn::real>(3, 4);
  const auto c = from_eigen<mat<cplx>>(z);
  EXPECT_EQ(c.get(1, 0).im, 4);
  EXPECT_EQ(tessarn::to_eigen(c), z);
  EXPECT_EQ(tessarn::to_eigen(from_eigen<sqmat<cplx>>(z.leftCols(1)))(0, 0).imag(), 2);
  EXPECT_EQ(from_eigen<binom>(Eigen::Vector3d(1, 0, 2))(3), 19);
  const auto points = from_eigen<std::vector<vector3d>>(e);
  EXPECT_TRUE(points[1] == vector3d(4, 5, 6));
  EXPECT_TRUE(from_eigen<std::vector<vector>>(e.leftCols(2))[1] == vector(4, 5));
}

}  // namespace
