// Matrices of hostile entries: decomposition, inversion, solves, determinants, matching.
#include <cmath>
#include <cstring>

#include "input.h"

namespace {

using real_mat = mat<long double>;
using real_sqmat = sqmat<long double>;

real_mat matrix(fuzz::input& in, tessarn::ulong width, tessarn::ulong height) {
  real_mat m;
  m.create(width, height);
  for (tessarn::ulong i = 0; i < width * height; ++i) m.getData()[i] = in.real();
  return m;
}

void general(fuzz::input& in) {
  const tessarn::ulong width = in.number(12), height = in.number(12);
  real_mat a = matrix(in, width, height), u, s, v, inverse, x;
  a.decompose(u, s, v);
  fuzz::require(u.getWidth() == width && u.getHeight() == height && s.getWidth() == width, "sizes of the factors");
  a.invert(inverse);
  fuzz::require(inverse.getWidth() == height && inverse.getHeight() == width, "sizes of the inverse");
  const real_mat b = matrix(in, 1, height);
  x.solve(a, b);
  fuzz::require(x.getWidth() == 1 && x.getHeight() == width, "sizes of the solution");
  x = a * inverse;
  x = inverse + a;
  x = a - a * in.real();
  a.transpose(a);
  x.solve(x, x);
  x.invert(x);
  x.normalize();
  if (width > 0 && height > 0) {
    const tessarn::ulong x = in.any_number(), y = in.any_number(), from = in.any_number();
    a.set(x, y, a.get(from, in.any_number()));
  }
}

void square(fuzz::input& in) {
  const tessarn::ulong n = in.number(12);
  real_sqmat a;
  a.create(n);
  for (tessarn::ulong i = 0; i < n * n; ++i) a.getData()[i] = in.real();
  a.det();
  const tessarn::ulong column = in.any_number();
  a.cof(column, in.any_number());
  const tessarn::ulong columns = 1 + in.number(2);
  real_mat b = matrix(in, columns, 1 + in.number(n));
  a.solve(b);
  real_sqmat c(a);
  c.orthogonalize();
  a.optimize();
  const real_sqmat product = c * a;
  c *= a;
  for (tessarn::ulong i = 0; i < n * n; ++i) {
    const tessarn::real one = product.getData()[i], other = c.getData()[i];
    fuzz::require(std::memcmp(&one, &other, sizeof one) == 0, "both products agree");
  }
  c *= c;
  if (n > 0) {
    const tessarn::ulong to = in.any_number();
    c.setColumn(to, a.getColumn(in.any_number()));
  }
  c.transpose(c);
  fuzz::require(c.getSize() == n, "the size stays");
}

void complex_square(fuzz::input& in) {
  const tessarn::ulong n = in.number(10);
  sqmat<cplx> a;
  a.create(n);
  for (tessarn::ulong y = 0; y < n; ++y)
    for (tessarn::ulong x = 0; x < n; ++x) a.set(x, y, cplx{in.real(), in.real()});
  a.det();
  const tessarn::ulong column = in.any_number();
  a.cof(column, in.any_number());
  mat<cplx> b;
  b.create(1, 1 + in.number(n));
  a.solve(b);
  sqmat<cplx> c(a);
  c.orthogonalize();
  a.optimize();
  const sqmat<cplx> product = c * a;
  c *= a;
  if (n > 0) {
    const cplx one = product.get(n - 1, 0), other = c.get(n - 1, 0);
    fuzz::require(std::memcmp(&one.re, &other.re, 2 * sizeof one.re) == 0, "both products agree");
    const tessarn::ulong to = in.any_number();
    c.setColumn(to, a.getColumn(in.any_number()));
  }
  cplx z{in.real(), in.real()}, w{in.real(), in.real()};
  z /= w;
  z.sqrt();
  w.phi();
}

void match(fuzz::input& in) {
  const std::vector<vector3d> a = fuzz::space_points(in, 24);
  std::vector<vector3d> b(a.size());
  for (vector3d& p : b) p = vector3d{in.real(), in.real(), in.real()};
  real_sqmat m;
  const bool matched = m.calc_match(a.data(), b.data(), static_cast<tessarn::ulong>(a.size()));
  fuzz::require(m.getSize() == (matched ? 4u : 0u), "a matrix when there is a match");
  m.calc_transform(a.data(), b.data(), static_cast<tessarn::ulong>(a.size()));
  vector3d p{in.real(), in.real(), in.real()};
  m.transform(p, p);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::input in(data, size);
  switch (in.byte() % 4) {
    case 0: general(in); break;
    case 1: square(in); break;
    case 2: complex_square(in); break;
    default: match(in); break;
  }
  return 0;
}
