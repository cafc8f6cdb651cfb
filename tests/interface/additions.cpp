// What the headers add to the documented members: containers, spans, initializer lists, operators with a number on the
// left, counts of 64 bits, assignments that standard algorithms accept. Compiled by each compiler in each standard.
#include <tessarn/tessarn.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>
#if __cplusplus >= 202002L && defined(__has_include)
#if __has_include(<concepts>) && __has_include(<span>)
#include <concepts>
#include <iterator>
#include <span>
#define TESTS_CPP20 1
#endif
#endif

namespace {

int failures = 0;

#define EXPECT(condition)                                         \
  do {                                                            \
    if (!(condition)) {                                           \
      std::printf("%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                 \
    }                                                             \
  } while (false)

template <class Exception, class Function>
bool throws(Function f) {
  try {
    f();
  } catch (const Exception&) {
    return true;
  }
  return false;
}

// A program's own operators are preferred to the library's templates.
namespace own {
int calls = 0;
}

}  // namespace

template <class T>
sqmat<T> operator*(const sqmat<T>& a, const sqmat<T>&) {
  ++own::calls;
  return a;
}
inline binom operator+(const binom& p, const binom&) {
  ++own::calls;
  return p.clone();
}
inline vector operator*(double k, const vector& v) {
  ++own::calls;
  return v * k;
}

namespace {

void own_operators() {
  own::calls = 0;
  sqmat<long double> a{{1, 2}, {3, 4}};
  const sqmat<long double> b = a;
  sqmat<long double> c = a * b;
  c = b * a;
  c = a * a;
  c = b * sqmat<long double>(2);
  EXPECT(own::calls == 4);
  binom p{1, 2};
  const binom q{1};
  binom r = p + q;
  r = q + p;
  r = p + binom{3};
  EXPECT(own::calls == 7);
  vector v = 2.0 * vector(1, 2);
  EXPECT(own::calls == 8 && v == vector(2, 4));
}

void complex_numbers() {
  const cplx z(1, -2);
  EXPECT(-z == cplx(-1, 2));
  EXPECT(3 * z == cplx(3, -6) && 0.5 * z == z * 0.5);
  cplx a(1, 2);
  a = {};
  EXPECT(a == cplx(0, 0));
}

void vectors() {
  vector v(1, 2);
  EXPECT(-v == vector(-1, -2) && 3.0f * v == vector(3, 6));
  v = {};
  EXPECT(v == vector());
  v = {3, 4};
  EXPECT(v == vector(3, 4));
  const vector3d s(1, 2, 3);
  EXPECT(-s == vector3d(-1, -2, -3) && 2 * s == s + s && s / 2 == s * 0.5);
  polarvector3d p(0.5, 0.25, 2);
  EXPECT((3 * p).len == 6 && (p / 4).len == 0.5);
  EXPECT((-p).lenld() > 1.999 && (-p).beta < 0);
  p = {};
  EXPECT(p == polarvector3d());
  p = {1, 0.5, 2};
  EXPECT(p == polarvector3d(1, 0.5, 2));
  vectormat list{{0, 0}, {2, 4}};
  v = list;
  EXPECT(v == vector(1, 2));
  v = std::as_const(list);
  EXPECT(v == vector(1, 2));
}

void lists() {
  vectormat list{{2, 1}, {1, 5}};
  EXPECT(list.size() == 2 && list.capacity == 1024);
  const vector more[] = {{1, 3}, {0, 0}};
  list.append(more, 2);
  list.append(std::vector<vector>{{7, 7}});
  list.append(vectormat{{8, 8}});
  EXPECT(list.size() == 6 && list[5] == vector(8, 8) && std::as_const(list)[4] == vector(7, 7));
  list[4].x = 9;
  double sum = 0;
  for (const vector& v : list) sum += static_cast<double>(v.x);
  EXPECT(sum == 2 + 1 + 1 + 0 + 9 + 8);
  std::sort(list.begin(), list.end(), [](const vector& a, const vector& b) { return a.x < b.x; });
  EXPECT(list[0] == vector(0, 0) && list.data()[5].x == 9);
  vectormat reserved;
  reserved.reserve(5000);
  EXPECT(reserved.capacity == 5000 && reserved.size() == 0);
  const vector* storage = reserved.points;
  for (int i = 0; i < 5000; ++i) reserved.add(vector(i, i));
  EXPECT(reserved.points == storage && reserved.capacity == 5000);
  reserved.add(vector(1, 1));
  EXPECT(reserved.capacity == 6024 && reserved[4999].x == 4999);
  reserved.reserve(10);
  EXPECT(reserved.capacity == 6024);
  reserved = {};
  EXPECT(reserved.size() == 0);
}

void matrices() {
  const mat<long double> a{{1, 2}, {3, 4}, {5}};
  EXPECT(a.getWidth() == 2 && a.getHeight() == 3 && a.get(1, 2) == 0 && a.get(0, 2) == 5);
  mat<long double> zeros(2, 3);
  EXPECT(zeros.getWidth() == 2 && zeros.getHeight() == 3 && zeros.get(1, 2) == 0);
  mat<long double> none(0, 5);
  EXPECT(none.getHeight() == 5 && none.row(0).empty() && none.column(0).empty());
  EXPECT((2 * a).get(1, 1) == 8);
  mat<long double> b = a;
  for (tessarn::real& v : b.row(1)) v *= 10;
  EXPECT(b.get(0, 1) == 30 && b.row(4)[1] == 40);
  for (tessarn::real& v : b.column(1)) v = 7;
  EXPECT(b.get(1, 0) == 7 && b.get(1, 2) == 7 && b.column(3).size() == 3);
  auto second = a.column(0).begin();
  EXPECT(*second++ == 1 && *second == 3 && *++second == 5 && ++second == a.column(0).end());
  const sqmat<long double> s{{1, 2}, {3}};
  EXPECT(s.getSize() == 2 && s.get(1, 1) == 0 && s.row(1)[0] == 3 && s.column(1)[0] == 2);
  EXPECT(sqmat<long double>(3).get(2, 2) == 0);
  const mat<cplx> c{{cplx(1, 2), cplx(3, 4)}};
  EXPECT(c.getWidth() == 2 && c.row(0)[1] == cplx(3, 4) && mat<cplx>(2, 2).get(1, 1) == cplx(0, 0));
  sqmat<cplx> z{{cplx(0, 1)}};
  EXPECT(z.column(0)[0] == cplx(0, 1) && sqmat<cplx>(2).getSize() == 2);
  b = {};
  EXPECT(b.getWidth() == 0);
  (b = a) = mat<long double>(1, 1);
  EXPECT(b.getHeight() == 1);
}

void polynomials() {
  const binom p{1, 2, 3}, q{0, 1};
  EXPECT(p(2) == 17 && p.size() == 3 && p.data()[2] == 3);
  EXPECT((p - q)(2) == 15 && (p * q)(2) == 34 && (-p)(2) == -17 && (2 * p)(2) == 34 && (p * 0.5)(2) == 8.5);
  EXPECT(p(2) == 17 && q(2) == 2);  // the operands are left as they were
  const hyperbinom h{{1, 2}, {3, 4}}, one{{1}};
  EXPECT(h(1, 1) == 10 && (h + one)(1, 1) == 11 && (h - one)(1, 1) == 9 && (h * one)(1, 1) == 10);
  EXPECT((-h)(1, 1) == -10 && (3 * h)(1, 1) == 30 && (h * 2)(1, 1) == 20);
  binom deep = p.clone();
  deep.set(0, 100);
  EXPECT(p.get(0) == 1);
}

void containers_and_counts() {
  const std::vector<vector> points{{0, 1}, {1, 3}, {2, 7}};
  const std::array<vector, 3> fixed{vector(0, 1), vector(1, 3), vector(2, 7)};
  const vectormat list{{0, 1}, {1, 3}, {2, 7}};
  binom a, b, c, d;
  a.create(points, 3);
  b.create(fixed, 3u);
  c.create(list, 3UL);
  d.create(points.data(), points.size(), 3);  // a count of 64 bits
  for (int i = 0; i < 3; ++i) EXPECT(a.get(i) == b.get(i) && a.get(i) == c.get(i) && a.get(i) == d.get(i));
  a.createtan(points, 2);
  b.createtan(points.data(), points.size(), std::size_t{2});
  EXPECT(a.get(1) == b.get(1));
  std::vector<vector> mutable_points = points;
  b.create(mutable_points.data(), mutable_points.size(), 3);
  EXPECT(b.get(2) == d.get(2));

  const std::vector<vector3d> cloud{{0, 0, 1}, {1, 0, 3}, {0, 1, 4}, {1, 1, 10}};
  std::vector<vector3d> mutable_cloud = cloud;
  const std::vector<tessarn::real> ones(4, 1);
  hyperbinom s, t;
  s.create(cloud, 2);
  t.create(cloud.data(), ones.data(), cloud.size(), 2);
  EXPECT(s(0.5, 0.5) == t(0.5, 0.5));
  const plane from_container(cloud), from_count(cloud.data(), cloud.size()),
      from_mutable(mutable_cloud.data(), mutable_cloud.size());
  EXPECT(from_container == from_count && from_container == from_mutable);
  sqmat<long double> m, n;
  EXPECT(m.calc_match(cloud, cloud) && n.calc_match(cloud.data(), mutable_cloud.data(), cloud.size()));
  EXPECT(m == n && !m.calc_match(cloud, std::vector<vector3d>(3)));
  m.calc_transform(cloud, cloud);
  n.calc_transform(mutable_cloud.data(), cloud.data(), 4);
  EXPECT(m == n);

  vector3d normal;
  const vector3d up[] = {{0, 0, 1}};
  vector3d flat[] = {{1, 0, 0}, {0, 1, 0}};
  EXPECT(plane::CalcNormale(normal, up, 1, NULL, 0) && normal == vector3d(0, 0, 1));
  EXPECT(plane::CalcNormale(normal, 0, 0, static_cast<const vector3d*>(flat), 2) && normal == vector3d(0, 0, 1));
  EXPECT(plane::CalcNormale(normal, nullptr, 0, flat, 2) && normal == vector3d(0, 0, 1));
  EXPECT(plane::CalcNormale(normal, up, 1, flat, 2) && normal == vector3d(0, 0, 1));
  EXPECT(plane::CalcNormale(normal, up, std::size_t{1}, flat, std::size_t{2}));
  EXPECT(!plane::CalcNormale(normal, NULL, 0, NULL, 0) && !plane::CalcNormale(normal, nullptr, 1, nullptr, 1));
  EXPECT(from_container.distance(from_container.origin) == 0);
  EXPECT(plane(vector3d(0, 0, 1), vector3d(0, 1, 0), vector3d(2, 0, 0)).distance(vector3d(7, 7, 4)) == 3);

  constexpr std::size_t wide = std::size_t{1} << 32;
  using bad = std::bad_array_new_length;
  EXPECT(throws<bad>([] { delete new_vector(wide); }));
  EXPECT(throws<bad>([] { delete new_vector3d(wide); }));
  EXPECT(throws<bad>([] { delete new_polarvector3d(wide); }));
  EXPECT(throws<bad>([&] { a.create(points.data(), wide + 3, 3); }));
  EXPECT(throws<bad>([&] { a.create(points.data(), 3, -1LL); }));
  EXPECT(throws<bad>([&] { plane(cloud.data(), wide); }));
  EXPECT(throws<bad>([&] { s.create(cloud.data(), wide, 2); }));
  EXPECT(throws<bad>([&] { (void)m.calc_match(cloud.data(), cloud.data(), wide + 4); }));
  EXPECT(throws<bad>([&] { m.calc_transform(cloud.data(), cloud.data(), wide + 4); }));
  EXPECT(throws<bad>([] { mat<long double>(wide, wide); }));
  EXPECT(throws<bad>([] { mat<cplx>().create(wide, 1); }));
  EXPECT(throws<bad>([] { sqmat<long double>().create(wide); }));
  EXPECT(throws<bad>([] { sqmat<cplx> z(wide); }));
  delete new_vector(0);
  delete[] new_vector(std::size_t{3});
}

// Rows and columns of a matrix with two rows of two entries, through the object and through a constant.
template <class Matrix>
void views(Matrix m) {
  const Matrix& c = m;
  EXPECT(m.row(1).data() == c.row(3).data() && m.row(0).size() == 2 && c.row(0).end() == m.row(1).begin());
  EXPECT(m.column(1).data() == c.column(3).data() && m.column(0).stride() == 2 && c.column(0).size() == 2);
  m.row(1)[0] = m.column(1)[0];
  EXPECT(c.row(1)[0] == c.row(0)[1]);
  m = Matrix();
  EXPECT(m.row(0).empty() && c.row(0).empty() && m.column(0).empty() && c.column(0).empty());
}

void views_of_every_kind() {
  views(mat<long double>{{1, 2}, {3, 4}});
  views(sqmat<long double>{{1, 2}, {3, 4}});
  views(mat<cplx>{{cplx(1, 2), cplx(3, 4)}, {cplx(5, 6), cplx(7, 8)}});
  views(sqmat<cplx>{{cplx(1, 2), cplx(3, 4)}, {cplx(5, 6), cplx(7, 8)}});
  const vectormat list{{1, 2}, {3, 4}};
  EXPECT(list.end() - list.begin() == 2 && list.begin()->y == 2);
  binom p{1, 2};
  p.data()[1] = 5;
  EXPECT(p(1) == 6);
}

template <class T>
void is_movable() {
  static_assert(std::is_nothrow_move_constructible_v<T> && std::is_move_assignable_v<T>);
  static_assert(std::is_same_v<decltype(std::declval<T&>() = std::declval<T>()), T&>);
  static_assert(std::is_same_v<decltype(std::declval<T&>() = std::declval<const T&>()), T&>);
#if defined(TESTS_CPP20)
  static_assert(std::movable<T>);
  static_assert(std::sortable<T*, bool (*)(const T&, const T&)>);
#endif
}

void standard_algorithms() {
  is_movable<cplx>();
  is_movable<vector>();
  is_movable<vector3d>();
  is_movable<polarvector3d>();
  is_movable<vectormat>();
  is_movable<mat<long double>>();
  is_movable<mat<cplx>>();
  is_movable<sqmat<long double>>();
  is_movable<sqmat<cplx>>();
  is_movable<binom>();
  is_movable<hyperbinom>();
  is_movable<line3d>();
  is_movable<plane>();
#if defined(TESTS_CPP20)
  static_assert(std::copyable<cplx> && std::copyable<vector3d> && std::copyable<vectormat> && std::copyable<line3d>);
  const mat<long double> m{{1, 2}, {3, 4}};
  const std::span<const tessarn::real> row = m.row(1);
  EXPECT(row.size() == 2 && row[0] == 3);
  EXPECT(std::span<const vector>(vectormat{{1, 2}}).size() == 1);
#endif
}

// Names of the classes within the namespace, and derived classes that use the library's own type names.
struct measured : vector {
  using real = float;
  using ulong = unsigned char;
  real weight = 1;
  ulong channel = 2;
};

void names() {
  tessarn::vector v(1, 2);
  tessarn::vector3d s(1, 2, 3);
  tessarn::mat<long double> m{{1}};
  tessarn::sqmat<tessarn::cplx> z;
  tessarn::binom p{1};
  tessarn::hyperbinom h;
  tessarn::plane f;
  tessarn::line3d l;
  tessarn::vectormat list;
  tessarn::polarvector3d w;
  delete tessarn::new_vector(0);
  EXPECT(v.x == 1 && s.z == 3 && m.get(0, 0) == 1 && z.getSize() == 0 && p(0) == 1 && h.getgrade() == 0);
  EXPECT(f.normal == l.start && list.size() == 0 && w.len == 0);
  measured point;
  EXPECT(point.weight == 1 && point.channel == 2);
}

}  // namespace

int main() {
  own_operators();
  complex_numbers();
  vectors();
  lists();
  matrices();
  polynomials();
  containers_and_counts();
  views_of_every_kind();
  standard_algorithms();
  names();
  std::printf("%d wrong\n", failures);
  return failures == 0 ? 0 : 1;
}
