// Calls every member of mat and sqmat, in both instantiations, through the module.
#include <tessarn/matrix.h>

#include <cmath>
#include <utility>

#include "check.h"

namespace {

using tessarn::real;
using real_mat = mat<long double>;
using complex_mat = mat<cplx>;
using real_sqmat = sqmat<long double>;
using complex_sqmat = sqmat<cplx>;

bool near(real a, real b) { return std::fabs(a - b) < real(1e-12); }

// 2 x 2 with the rows (4, 1) and (2, 3).
template <class Matrix>
void fill(Matrix& m) {
  m.set(0, 0, 4);
  m.set(1, 0, 1);
  m.set(0, 1, 2);
  m.set(1, 1, 3);
}

template <class Matrix>
void fill_complex(Matrix& m) {
  m.set(0, 0, cplx(4, 0));
  m.set(1, 0, cplx(1, 0));
  m.set(0, 1, cplx(2, 0));
  m.set(1, 1, cplx(3, 0));
}

// Matrix is real_mat or const real_mat.
template <class Matrix>
void real_matrix(Matrix& a) {
  CHECK(a.get(1, 0) == 1 && a.getWidth() == 2 && a.getHeight() == 2 && a.getData()[3] == 3);
  Matrix copied(a);
  CHECK(copied == a && !(copied != a));
  CHECK((a + copied).get(0, 0) == 8 && (a - copied).get(0, 0) == 0);
  CHECK((a * copied).get(0, 0) == 18);
  CHECK((a * real(2)).get(0, 0) == 8 && (a / real(2)).get(0, 0) == 2);
  real_mat t;
  a.transpose(t);
  CHECK(t.get(0, 1) == 1);
  CHECK(!a.isDiagonal());
  real_mat inverse;
  a.invert(inverse);
  CHECK(near(inverse.get(0, 0), real(0.3)));
  real_mat u, s, v;
  a.decompose(u, s, v);
  CHECK(near(s.get(0, 0) * s.get(1, 1), 10));
  real_mat target;
  target = a;
  CHECK(target.get(0, 0) == 4);
}

template <class Matrix>
void column_solve(Matrix& a, Matrix& column) {
  CHECK(near(column.normalize().get(0, 0), real(0.6)));
  real_mat x;
  x.solve(a, column);
  CHECK(near(4 * x.get(0, 0) + x.get(0, 1), 3));
}

void real_matrices() {
  real_mat a;
  a.create(2, 2);
  fill(a);
  real_matrix(a);
  real_matrix<const real_mat>(a);
  real_mat column;
  column.create(1, 2);
  column.set(0, 0, 3);
  column.set(0, 1, 4);
  column_solve(a, column);
  column_solve<const real_mat>(a, column);
  real_mat moved(std::move(a));
  a = std::move(moved);
  CHECK(a.get(0, 0) == 4);
}

template <class Matrix>
void complex_matrix(Matrix& a) {
  CHECK(a.get(1, 0).re == 1 && a.getWidth() == 2 && a.getHeight() == 2 && a.getData()[3].re == 3);
  Matrix copied(a);
  complex_mat target;
  target = copied;
  CHECK(target.get(0, 1).re == 2);
}

void complex_matrices() {
  complex_mat a;
  a.create(2, 2);
  fill_complex(a);
  complex_matrix(a);
  complex_matrix<const complex_mat>(a);
  complex_mat moved(std::move(a));
  a = std::move(moved);
  CHECK(a.get(0, 0).re == 4);
}

template <class Matrix>
void real_square(Matrix& a) {
  CHECK(a.get(1, 0) == 1 && a.getSize() == 2 && a.getData()[3] == 3);
  Matrix copied(a);
  CHECK(copied == a && !(copied != a));
  CHECK(a.getColumn(0).get(0, 1) == 2);
  real_sqmat t;
  a.transpose(t);
  CHECK(t.get(0, 1) == 1);
  t = a;
  t *= a;
  CHECK(t.get(0, 0) == 18);
  CHECK((a * a).get(0, 0) == 18 && (a * real_sqmat()).getSize() == 0);
  CHECK(a.det() == 10 && a.cof(0, 0) == 3);
  real_mat b = a.getColumn(0);
  a.solve(b);
  CHECK(near(b.get(0, 0), 1) && near(b.get(0, 1), 0));
}

template <class Vector>
void transforms() {
  vector3d from[4] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  vector3d to[4] = {{1, 2, 3}, {2, 2, 3}, {1, 3, 3}, {1, 2, 4}};
  real_sqmat m;
  CHECK(m.calc_match(from, to, 4) && m.getSize() == 4);
  m.calc_transform(from, to, 4);
  Vector in(1, 1, 1);
  vector3d out;
  m.transform(in, out);
  CHECK(near(out.x, 2) && near(out.y, 3) && near(out.z, 4));
  const real_sqmat& constant = m;
  constant.transform(from, to, 4);
  CHECK(near(to[3].z, 4));
}

void real_squares() {
  real_sqmat a;
  a.create(2);
  fill(a);
  real_square(a);
  real_square<const real_sqmat>(a);
  transforms<vector3d>();
  transforms<const vector3d>();
  real_sqmat b(a);
  b.setColumn(1, a.getColumn(0));
  CHECK(b.get(1, 1) == 2);
  real_sqmat moved(std::move(b));
  b = std::move(moved);
  b = a;
  b.optimize();
  CHECK(b.get(0, 1) == 0);
  b = a;
  b.orthogonalize();
  CHECK(near(b.get(0, 0) * b.get(1, 0) + b.get(0, 1) * b.get(1, 1), 0));
}

template <class Matrix>
void complex_square(Matrix& a) {
  CHECK(a.get(1, 0).re == 1 && a.getSize() == 2);
  Matrix copied(a);
  CHECK(a.getColumn(0).get(0, 1).re == 2);
  complex_sqmat t;
  t = copied;
  t *= a;
  CHECK(t.get(0, 0).re == 18);
  CHECK((a * a).get(0, 0).re == 18 && (a * complex_sqmat()).getSize() == 0);
  CHECK(near(a.det().re, 10) && a.cof(0, 0).re == 3);
  complex_mat b = a.getColumn(0);
  a.solve(b);
  CHECK(near(b.get(0, 0).re, 1));
}

void complex_squares() {
  complex_sqmat a;
  a.create(2);
  fill_complex(a);
  complex_square(a);
  complex_square<const complex_sqmat>(a);
  complex_sqmat b(a);
  b.setColumn(1, a.getColumn(0));
  CHECK(b.get(1, 1).re == 2);
  complex_sqmat moved(std::move(b));
  b = std::move(moved);
  b = a;
  b.optimize();
  CHECK(b.get(0, 1).re == 0);
  b = a;
  b.orthogonalize();
  CHECK(near(b.get(0, 0).re * b.get(1, 0).re + b.get(0, 1).re * b.get(1, 1).re, 0));
}

}  // namespace

int main() {
  real_matrices();
  complex_matrices();
  real_squares();
  complex_squares();
  return check::finish();
}
