// Comparisons between every kind of operand, for values whose == and != are not each other's negation or whose == is
// not symmetric. C++20 may try `!(b == a)` for `a != b` and `b == a` for `a == b`; every standard must choose the
// documented operator nevertheless. Prints one line a comparison and fails at the first wrong one.
#include <tessarn/tessarn.h>

#include <cstdio>
#include <limits>

namespace {

int failures = 0;

void expect(const char* what, bool value, bool wanted) {
  std::printf("%s %s %d\n", value == wanted ? "ok" : "WRONG", what, value);
  failures += value != wanted;
}

template <class T>
const T constant(T v) {  // a constant temporary
  return v;
}

// A named object, a named constant, a temporary and a constant temporary on either side.
#define EXPECT_ALL_KINDS(type, operation, left, right, wanted)                                                      \
  do {                                                                                                              \
    type a = left, b = right;                                                                                       \
    const type ca = left, cb = right;                                                                               \
    (void)a, (void)b;                                                                                               \
    expect(#left " " #operation " " #right ", object and object", a operation b, wanted);                           \
    expect(#left " " #operation " " #right ", object and constant", a operation cb, wanted);                        \
    expect(#left " " #operation " " #right ", object and temporary", a operation type(right), wanted);              \
    expect(#left " " #operation " " #right ", object and constant temporary", a operation constant(b), wanted);     \
    expect(#left " " #operation " " #right ", constant and object", ca operation b, wanted);                        \
    expect(#left " " #operation " " #right ", constant and constant", ca operation cb, wanted);                     \
    expect(#left " " #operation " " #right ", constant and temporary", ca operation type(right), wanted);           \
    expect(#left " " #operation " " #right ", constant and constant temporary", ca operation constant(b), wanted);  \
    expect(#left " " #operation " " #right ", temporary and object", type(left) operation b, wanted);               \
    expect(#left " " #operation " " #right ", temporary and constant", type(left) operation cb, wanted);            \
    expect(#left " " #operation " " #right ", temporary and temporary", type(left) operation type(right), wanted);  \
    expect(#left " " #operation " " #right ", temporary and constant temporary", type(left) operation constant(b),  \
           wanted);                                                                                                 \
    expect(#left " " #operation " " #right ", constant temporary and object", constant(a) operation b, wanted);     \
    expect(#left " " #operation " " #right ", constant temporary and constant", constant(a) operation cb, wanted);  \
    expect(#left " " #operation " " #right ", constant temporary and temporary", constant(a) operation type(right), \
           wanted);                                                                                                 \
  } while (false)

mat<long double> row_of(int columns) { return mat<long double>(columns, 1); }
sqmat<long double> square_of(int n) { return sqmat<long double>(n); }

// The other origin lies on this plane, but not this origin on the other one: the normals count as equal, since one of
// their coordinates is NaN in either, and differ in the coordinate that decides.
plane through_both() {
  plane p(vector3d(0, 0, 0), vector3d(0, 0, 1));
  return p;
}
plane above() {
  plane p(vector3d(1, 2, 0), vector3d(0, 0, 1));
  p.normal = vector3d(0, 0, std::numeric_limits<double>::quiet_NaN());
  return p;
}

void numbers() {
  EXPECT_ALL_KINDS(cplx, !=, cplx(1, 2), cplx(1, 3), false);
  EXPECT_ALL_KINDS(cplx, ==, cplx(1, 2), cplx(1, 3), false);
  EXPECT_ALL_KINDS(cplx, !=, cplx(1, 2), cplx(3, 2), false);
  EXPECT_ALL_KINDS(cplx, !=, cplx(1, 2), cplx(2, 3), true);
  EXPECT_ALL_KINDS(cplx, ==, cplx(1, 2), cplx(1, 2), true);
  EXPECT_ALL_KINDS(cplx, !=, cplx(1, 2), cplx(1, 2), false);
  EXPECT_ALL_KINDS(cplx, <, cplx(1, 0), cplx(0, 2), true);
  EXPECT_ALL_KINDS(cplx, >, cplx(1, 0), cplx(0, 2), false);
  // A real number is an angle: cplx(2.0) is (cos 2, sin 2).
  cplx z(cplx(2.0).re, 5);
  const cplx c = z;
  expect("z != 2.0, one part equal", z != 2.0, false);
  expect("c != 2.0, one part equal", c != 2.0, false);
  expect("2.0 != z, one part equal", 2.0 != z, false);
  expect("2.0 != c, one part equal", 2.0 != c, false);
  expect("2.0 != temporary", 2.0 != cplx(c), false);
  expect("2 != z", 2 != z, false);
  expect("z == 2.0", z == 2.0, false);
  expect("2.0 == z", 2.0 == z, false);
  expect("2.0 == cplx(2.0)", 2.0 == cplx(2.0), true);
  expect("cplx(2.0) == 2.0", cplx(2.0) == 2.0, true);
  expect("3 == cplx(3.0)", 3 == cplx(3.0), true);
  expect("0.5 != cplx(1.5)", 0.5 != cplx(1.5), true);
}

void vectors() {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_ALL_KINDS(vector, ==, vector(1, nan), vector(1, 3), true);
  EXPECT_ALL_KINDS(vector3d, ==, vector3d(1, nan, 2), vector3d(1, 3, 2), true);
  EXPECT_ALL_KINDS(polarvector3d, ==, polarvector3d(1, nan, 2), polarvector3d(1, 3, 2), true);
  // The left side decides which form is compared: an angle that is not normalised shows in the polar form alone.
  polarvector3d p(tessarn::two_pi + 1, 0, 1);
  vector3d v = p;
  const vector3d cv = v;
  const polarvector3d cp = p;
  expect("v == p", v == p, true);
  expect("v == cp", v == cp, true);
  expect("cv == p", cv == p, true);
  expect("cv == cp", cv == cp, true);
  expect("temporary v == p", vector3d(v) == p, true);
  expect("v == temporary p", v == polarvector3d(p), true);
  expect("p == v", p == v, false);
  expect("p == cv", p == cv, false);
  expect("cp == v", cp == v, false);
  expect("cp == cv", cp == cv, false);
  expect("p == temporary v", p == vector3d(v), false);
  expect("temporary p == v", polarvector3d(p) == v, false);
}

void matrices() {
  EXPECT_ALL_KINDS(mat<long double>, ==, row_of(2), row_of(3), true);
  EXPECT_ALL_KINDS(mat<long double>, !=, row_of(2), row_of(3), false);
  EXPECT_ALL_KINDS(sqmat<long double>, ==, square_of(2), square_of(3), true);
  EXPECT_ALL_KINDS(sqmat<long double>, !=, square_of(2), square_of(3), false);
}

void planes() {
  EXPECT_ALL_KINDS(plane, ==, through_both(), above(), true);
  EXPECT_ALL_KINDS(plane, ==, above(), through_both(), false);
  plane a = above(), b = a;
  expect("a plane with a NaN in its normal is not equal to its copy", a == plane(b), false);
}

}  // namespace

int main() {
  numbers();
  vectors();
  matrices();
  planes();
  std::printf("%d wrong\n", failures);
  return failures == 0 ? 0 : 1;
}
