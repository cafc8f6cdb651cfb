// What tessarn/io.h prints. The formatter is tested where the standard library has one.
#include "tessarn/io.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

// By operator<<, and by the formatter as well where there is one: both must agree.
template <class T>
std::string printed(const T& v) {
  std::ostringstream os;
  os << v;
#if defined(__cpp_lib_format)
  EXPECT_EQ(os.str(), std::format("{:.6g}", v));
#endif
  return os.str();
}

mat<long double> two_by_three() {
  mat<long double> m;
  m.create(2, 3);
  for (tessarn::ulong y = 0; y < 3; ++y)
    for (tessarn::ulong x = 0; x < 2; ++x) m.set(x, y, 10.0 * y + x);
  return m;
}

binom polynomial(const std::vector<double>& coefficients) {
  binom p;
  p.create(static_cast<tessarn::slong>(coefficients.size()));
  for (std::size_t i = 0; i < coefficients.size(); ++i) p.set(static_cast<tessarn::slong>(i), coefficients[i]);
  return p;
}

TEST(Io, Scalars) {
  EXPECT_EQ(printed(cplx(1, -2)), "1-2i");
  EXPECT_EQ(printed(cplx(-1.5, 0.0)), "-1.5+0i");
  EXPECT_EQ(printed(cplx(0.0, -0.0)), "0-0i");
  EXPECT_EQ(printed(cplx(nan, -nan)), "nan+nani");
  EXPECT_EQ(printed(cplx(-inf, inf)), "-inf+infi");
}

TEST(Io, Vectors) {
  EXPECT_EQ(printed(vector(1, -2.5)), "(1, -2.5)");
  EXPECT_EQ(printed(vector(-nan, inf)), "(nan, inf)");
  EXPECT_EQ(printed(vector3d(1, 2, -3)), "(1, 2, -3)");
  EXPECT_EQ(printed(polarvector3d(0.5, -0.25, 2)), "(alpha 0.5, beta -0.25, len 2)");
}

TEST(Io, Lists) {
  vectormat list;
  EXPECT_EQ(printed(list), "[]");
  list.add(vector(1, 2));
  EXPECT_EQ(printed(list), "[(1, 2)]");
  list.add(vector(-1, 0.5));
  EXPECT_EQ(printed(list), "[(1, 2), (-1, 0.5)]");
}

// Width 2 and height 3: three lines of two.
TEST(Io, MatricesRowByRow) {
  EXPECT_EQ(printed(two_by_three()), "[0, 1]\n[10, 11]\n[20, 21]");
  sqmat<long double> q;
  q.create(2);
  q.set(0, 0, 1);
  q.set(1, 0, 2);
  q.set(0, 1, 3);
  q.set(1, 1, 4);
  EXPECT_EQ(printed(q), "[1, 2]\n[3, 4]");
}

TEST(Io, ComplexMatrices) {
  mat<cplx> m;
  m.create(2, 1);
  m.set(1, 0, cplx(1, -1));
  EXPECT_EQ(printed(m), "[0+0i, 1-1i]");
  sqmat<cplx> q;
  q.create(1);
  q.set(0, 0, cplx(2, 3));
  EXPECT_EQ(printed(q), "[2+3i]");
}

// Element access never returns there, so nothing may be read.
TEST(Io, MatricesWithoutEntries) {
  EXPECT_EQ(printed(mat<long double>()), "[]");
  EXPECT_EQ(printed(mat<cplx>()), "[]");
  EXPECT_EQ(printed(sqmat<long double>()), "[]");
  EXPECT_EQ(printed(sqmat<cplx>()), "[]");
  mat<long double> m;
  m.create(3, 0);
  EXPECT_EQ(printed(m), "[]");
}

TEST(Io, Polynomials) {
  EXPECT_EQ(printed(binom()), "(empty)");
  EXPECT_EQ(printed(polynomial({0})), "0");
  EXPECT_EQ(printed(polynomial({-1, -2, 0, 4})), "-1 - 2 x + 0 x^2 + 4 x^3");
  EXPECT_EQ(printed(polynomial({1, nan, -inf})), "1 + nan x - inf x^2");
  EXPECT_NE(printed(polynomial(std::vector<double>(124, 1.0))).find("+ 1 x^123"), std::string::npos);
}

TEST(Io, Surfaces) {
  EXPECT_EQ(printed(hyperbinom()), "(empty)");
  hyperbinom p;
  p.create(2);
  p.set(0, 0, 1);
  p.set(1, 0, 2);
  p.set(0, 1, -3);
  p.set(1, 1, 4);
  EXPECT_EQ(printed(p), "1 + 2 x - 3 y + 4 x y");
  hyperbinom three;
  three.create(3);
  three.set(2, 2, 5);
  EXPECT_NE(printed(three).find("+ 5 x^2 y^2"), std::string::npos);
}

TEST(Io, Geometry) {
  EXPECT_EQ(printed(line3d(vector3d(0, 0, 0), vector3d(1, 2, 3))), "(0, 0, 0) to (1, 2, 3)");
  EXPECT_EQ(printed(plane(vector3d(1, 2, 3), vector3d(0, 0, 1))),
            "origin (1, 2, 3), normal (0, 0, 1), axes (1, 0, 0) and (0, 1, 0)");
}

TEST(Io, StreamSettingsApplyToEveryNumber) {
  std::ostringstream os;
  os << std::fixed << std::setprecision(2) << std::setw(6) << vector(1, -2) << '|' << vector(3, 4);
  EXPECT_EQ(os.str(), "(  1.00,  -2.00)|(3.00, 4.00)");
  std::ostringstream rows;
  rows << std::setw(3) << two_by_three();
  EXPECT_EQ(rows.str(), "[  0,   1]\n[ 10,  11]\n[ 20,  21]");
}

TEST(Io, ChainsAndPrintsConstants) {
  const vector a(1, 2);
  std::ostringstream os;
  os << a << ' ' << a + vector(1, 1) << ' ' << 2.5;
  EXPECT_EQ(os.str(), "(1, 2) (2, 3) 2.5");
}

#if defined(__cpp_lib_format)
TEST(Io, FormatOptionsApplyToEveryNumber) {
  EXPECT_EQ(std::format("{:.2f}", vector(1, -2)), "(1.00, -2.00)");
  EXPECT_EQ(std::format("{:5.1f}|{}", two_by_three(), cplx(1, -2)),
            "[  0.0,   1.0]\n[ 10.0,  11.0]\n[ 20.0,  21.0]|1-2i");
  EXPECT_EQ(std::format("{}", polynomial({0.1, -0.5})), "0.1 - 0.5 x");
}
#endif

}  // namespace
