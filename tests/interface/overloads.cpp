// The expressions that callers write, compiled by each compiler in each standard with warnings as errors.
// Prints the bits of every result: all compilers must print the same.
#include <tessarn/tessarn.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace {

void print(const char* name, double v) {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  std::printf("%-24s %016llx\n", name, static_cast<unsigned long long>(bits));
}

template <class V>
void values_in_containers(const V& a, const V& b) {
  std::vector<V> list{a, b, a};
  list.push_back(b);
  list.insert(list.begin(), a);
  list.erase(list.begin() + 1);
  std::swap(list.front(), list.back());
  const std::vector<V> copied = list;
  list = copied;
}

void complex_numbers() {
  cplx a(1.5, -0.25), b(0.3, 0.7);
  const cplx c(2.25, 1.125);
  cplx r = a + b * 2.0;
  r = c * a - b / c;
  r += c * c;
  r -= a / 3.0;
  r *= c;
  r /= a + b;
  print("cplx re", static_cast<double>(r.re));
  print("cplx im", static_cast<double>(r.im));
  print("cplx root", static_cast<double>((c * c).sqrt().re));
  print("cplx compare", (a == b) + 2 * (c == a) + 4 * (a != cplx(9, 9)) + 8 * (cplx(1, 2) < c) + 16 * (c > a));
  print("cplx length", static_cast<double>(c.lenld()) + static_cast<double>(c.lenul()) + static_cast<double>(c.phi()));
  std::vector<cplx> list{c, a, b};
  std::sort(list.begin(), list.end());
  print("cplx sorted", static_cast<double>(list[0].re));
  values_in_containers(a, b);
}

void plane_vectors() {
  vector a(0.1, 0.2), b(3, -4);
  const vector c(1.1, 2.2);
  vector v = a + b * 2.0;
  v = c - a / 3.0;
  v += c * 0.1;
  v -= a;
  v *= 1.5;
  v /= 7.0;
  v = v.resize(3.0) + c.resize(2.0);
  print("vector x", static_cast<double>(v.x));
  print("vector y", static_cast<double>(v.y));
  print("vector angles",
        static_cast<double>(c.dirarc(a + b)) + static_cast<double>(a.arc(c)) + static_cast<double>(c.dirarc()));
  print("vector equal", (a == c) + 2 * (c == c) + 4 * (a == a + b) + 8 * (c == a));
  print("vector rounded", c.rx() + 10 * c.ry() + 100 * b.ry());
  std::vector<vector> list{c, a, b};
  std::sort(list.begin(), list.end(), [](const vector& p, const vector& q) { return p.x < q.x; });
  print("vector sorted", static_cast<double>(list[0].x));
  values_in_containers(a, c);
}

void space_vectors() {
  vector3d a(0.1, 0.2, 0.3), b(3, -4, 5);
  const vector3d c(1.1, 2.2, -0.7);
  vector3d v = a + b * 2.0;
  v += c.cross(a) - b / 3.0;
  v -= c * 0.3;
  v *= c;
  v *= 1.25;
  v /= 3.0;
  v = c.projection(v) + v.rotate(c, 0.5) + c.rotate(0.1, 0.2);
  print("vector3d x", static_cast<double>(v.x));
  print("vector3d y", static_cast<double>(v.y));
  print("vector3d z", static_cast<double>(v.z));
  print("vector3d dot",
        static_cast<double>(c * a) + static_cast<double>(a * c) + static_cast<double>((a + b) * (b - c)));
  print("vector3d equal", (a == c) + 2 * (c == c) + 4 * (a == a + b));
  polarvector3d p = c;
  const polarvector3d q(0.3, 0.2, 2);
  v = p + q;
  v = q;
  p = polarvector3d(v);
  p = c;  // changes nothing
  print("polar alpha", static_cast<double>(p.alpha));
  print("polar sum",
        static_cast<double>((p - q).len) + static_cast<double>(q.cross(p).beta) + static_cast<double>(q * p));
  values_in_containers(a, c);
  values_in_containers(p, q);
}

void matrices() {
  mat<long double> a;
  a.create(2, 2);
  for (tessarn::ulong y = 0; y < 2; ++y)
    for (tessarn::ulong x = 0; x < 2; ++x) a.set(x, y, 0.3 + x + 2 * y);
  const mat<long double> c = a;
  mat<long double> r = a * c + c * 2.0 - a / 3.0;
  r = r + c * c;
  const bool same = (r == c) || (c == r) || (a != c);
  mat<long double> inverse;
  r.invert(inverse);
  print("mat entry", static_cast<double>(inverse.get(1, 0)) + static_cast<double>(c.get(0, 1)) + same);
  std::vector<mat<long double>> list{a, c};
  list.push_back(a * c);
  std::swap(list[0], list[2]);
  std::reverse(list.begin(), list.end());
  print("mat in a vector", static_cast<double>(list[2].get(1, 1)));
  sqmat<long double> s;
  s.create(2);
  for (tessarn::ulong y = 0; y < 2; ++y)
    for (tessarn::ulong x = 0; x < 2; ++x) s.set(x, y, 1.3 - x + 2 * y);
  const sqmat<long double> t(s);
  s *= t;
  s = s * t;
  s.setColumn(0, t.getColumn(1));
  print("sqmat det", static_cast<double>(s.det()) + static_cast<double>(t.cof(0, 1)) + (s == t));
  std::vector<sqmat<cplx>> complex_list(2);
  complex_list[0].create(2);
  complex_list[0].set(0, 0, cplx(1, 2));
  complex_list.push_back(complex_list[0]);
  const sqmat<cplx> square = complex_list[2] * complex_list[0];
  print("sqmat<cplx>", static_cast<double>(complex_list[2].get(0, 0).im + square.get(0, 0).re));
  std::vector<mat<cplx>> columns(2);
  columns[1] = complex_list[0].getColumn(0);
  print("mat<cplx>", static_cast<double>(columns[1].get(0, 0).re));
}

void polynomials() {
  const std::vector<vector> points{{0, 1}, {1, 3}, {2, 7}, {3, 13.5}};
  binom p;
  p.create(points.data(), static_cast<tessarn::ulong>(points.size()), 3);
  binom q;
  q = p;
  q += p;
  q *= 0.5;
  binom d;
  q.func_1(d);
  print("binom func", static_cast<double>(q.func(0.7)));
  print("binom arc", static_cast<double>(q.arc_1(0.7)) + static_cast<double>(d.func(0.3)));
  std::vector<binom> list(1);
  list[0] = q;
  list.push_back(p.antifunction(0.0, 2.0, 0.25));
  list.push_back(binom());
  print("binom in a vector", static_cast<double>(list[1].get(1)));
  const std::vector<vector3d> cloud{{0, 0, 1}, {1, 0, 3}, {0, 1, 4}, {1, 1, 10.25}};
  hyperbinom h;
  h.create(cloud.data(), 4, 2);
  print("hyperbinom", static_cast<double>(h.func(0.5, 0.25)));
  plane fitted(cloud.data(), 4);
  print("plane", static_cast<double>(fitted.normal.x) + static_cast<double>(fitted.origin.z));
  const plane upright(vector3d(0, 0, 1), vector3d(0.5, 0.25, 3));
  vector st;
  print("plane cross", static_cast<double>(upright.cross(vector3d(1, 2, 3)).x) +
                           static_cast<double>(upright.cross(vector3d(1, 2, 3), st).y));
  line3d segment(vector3d(0, 0, 0), vector3d(0.1, 0.2, 5));
  print("line3d", segment.cut_off(upright) + static_cast<double>(segment.start.z));
  values_in_containers(upright, fitted);
  values_in_containers(segment, line3d());
  vectormat list_of_points;
  for (const vector& v : points) list_of_points += v;
  const vectormat copied = list_of_points;
  vector centre;
  centre = copied;
  print("vectormat", static_cast<double>(copied.average().y) + static_cast<double>(centre.x) +
                         static_cast<double>(copied.avdir().y));
}

// Loops that compilers vectorise: the lanes must round as a single call does.
void loops() {
  constexpr std::size_t n = 97;
  std::vector<vector3d> a(n), b(n), c(n);
  std::vector<vector> p(n), q(n);
  std::vector<cplx> u(n), v(n), w(n);
  std::uint32_t seed = 1;
  auto next = [&seed] { return static_cast<double>(seed = seed * 1664525u + 1013904223u) * 0x1p-32; };
  for (std::size_t k = 0; k < n; ++k) {
    a[k].x = next(), a[k].y = next(), a[k].z = next();
    b[k].x = next(), b[k].y = next(), b[k].z = next();
    p[k] = vector(a[k].x, b[k].y);
    u[k] = cplx(a[k].y, b[k].z);
    v[k] = cplx(b[k].x, a[k].z);
  }
  double dots = 0, lengths = 0;
  for (std::size_t k = 0; k < n; ++k) dots += a[k] * b[k];
  for (std::size_t k = 0; k < n; ++k) lengths += static_cast<double>(a[k].lenld() + p[k].lenld());
  for (std::size_t k = 0; k < n; ++k) c[k] = a[k].cross(b[k]);
  for (std::size_t k = 0; k < n; ++k) c[k] = c[k] + b[k] * 0.3;
  for (std::size_t k = 0; k < n; ++k) q[k] = p[k] + p[k] * 0.7;
  for (std::size_t k = 0; k < n; ++k) w[k] = u[k] * v[k];
  for (std::size_t k = 0; k < n; ++k) w[k] = w[k] / v[k];
  print("loop of dot products", dots);
  print("loop of lengths", lengths);
  double sum[7] = {};
  for (std::size_t k = 0; k < n; ++k) {
    const double parts[7] = {c[k].x, c[k].y, c[k].z, q[k].x, q[k].y, w[k].re, w[k].im};
    for (int i = 0; i < 7; ++i) sum[i] = sum[i] / 2 + parts[i];
  }
  for (double s : sum) print("loops over arrays", s);
}

}  // namespace

int main() {
  loops();
  complex_numbers();
  plane_vectors();
  space_vectors();
  matrices();
  polynomials();
}
