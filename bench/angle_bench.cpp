// Angles and turns over arrays of the value classes, beside the calls of the C and C++ libraries that
// users would write.
#include <Eigen/Geometry>
#include <cmath>
#include <complex>

#include "inputs.h"
#include "plain/cplx.h"
#include "plain/vectors.h"
#include "tessarn/angles.h"

namespace bench {

namespace {

constexpr double pi = 3.141592653589793;

struct angle_inputs {
  explicit angle_inputs(long size) : n(std::size_t(size)), angles(random_values(n, 61)), result(3 * n) {
    test::random_source r(60);
    for (std::size_t k = 0; k < n; ++k) {
      const double x = r.uniform(), y = r.uniform(), z = r.uniform();
      numbers.emplace_back(x, y);
      complex.emplace_back(x, y);
      plain_numbers.push_back({x, y});
      flat.emplace_back(x, y);
      plain_flat.push_back({x, y});
      space.emplace_back(x, y, z);
      eigen.emplace_back(x, y, z);
      plain_space.push_back({x, y, z});
      polar.emplace_back(space.back());
      plain_polar.push_back(plain::polar_careful(plain_space.back()));
    }
  }
  std::size_t next(std::size_t k) const { return k + 1 < n ? k + 1 : 0; }
  void store(std::size_t k, double x, double y, double z) {
    result[3 * k] = x;
    result[3 * k + 1] = y;
    result[3 * k + 2] = z;
  }
  template <class V>
  void store(std::size_t k, const V& v) {
    store(k, v.x, v.y, v.z);
  }

  std::size_t n;
  static constexpr int rotation = 1;
  values angles, result;
  std::vector<cplx> numbers;
  std::vector<std::complex<double>> complex;
  std::vector<plain::cplx> plain_numbers;
  std::vector<vector> flat;
  std::vector<plain::vec2> plain_flat;
  std::vector<vector3d> space;
  std::vector<Eigen::Vector3d> eigen;
  std::vector<plain::vec3> plain_space;
  std::vector<polarvector3d> polar;
  std::vector<plain::polar> plain_polar;
};

// A call for each element of the arrays; what it stores is the result.
template <class Element>
auto each(Element f) {
  return [f](angle_inputs & in, int) -> auto& {
    for (std::size_t k = 0; k < in.n; ++k) f(in, k);
    return in.result;
  };
}

row<angle_inputs> angle_row(const std::string& operation, long n) {
  row<angle_inputs> r(operation, n, {});
  r.agree({1e-13}).in_headers();
  return r;
}

const plain::vec3 axis = {0.25, -0.5, 0.75};

void add_complex_angles(long n) {
  angle_row("cplx::phi over an array", n)
      .ours(each([](angle_inputs& in, std::size_t k) { in.result[k] = in.numbers[k].phi(); }))
      .peer("other", "std::arg", each([](angle_inputs& in, std::size_t k) {
              const double a = std::arg(in.complex[k]);
              in.result[k] = a < 0 ? a + 2 * pi : a;
            }))
      .plain(each([](angle_inputs& in, std::size_t k) { in.result[k] = plain::phi(in.plain_numbers[k]); }));
  angle_row("cplx::sqrt over an array", n)
      .ours(each([](angle_inputs& in, std::size_t k) {
        const cplx z = in.numbers[k].sqrt();
        in.store(k, z.re, z.im, 0);
      }))
      .peer("other", "std::sqrt", each([](angle_inputs& in, std::size_t k) {
              const std::complex<double> z = std::sqrt(in.complex[k]);
              const double sign = z.imag() < 0 ? -1 : 1;
              in.store(k, sign * z.real(), sign * z.imag(), 0);
            }))
      .plain(each([](angle_inputs& in, std::size_t k) {
        const plain::cplx z = plain::root(in.plain_numbers[k]);
        in.store(k, z.re, z.im, 0);
      }));
}

void add_directions(long n) {
  angle_row("vector::dirarc over an array", n)
      .ours(each([](angle_inputs& in, std::size_t k) { in.result[k] = in.flat[k].dirarc(); }))
      .peer("other", "std::atan2", each([](angle_inputs& in, std::size_t k) {
              in.result[k] = std::atan2(in.plain_flat[k].y, in.plain_flat[k].x);
            }))
      .plain(each([](angle_inputs& in, std::size_t k) { in.result[k] = plain::dirarc(in.plain_flat[k]); }));
  angle_row("vector3d::arc over an array", n)
      .ours(each([](angle_inputs& in, std::size_t k) { in.result[k] = in.space[k].arc(in.space[in.next(k)]); }))
      .peer("Eigen", "Eigen, atan2", each([](angle_inputs& in, std::size_t k) {
              const Eigen::Vector3d &a = in.eigen[k], &b = in.eigen[in.next(k)];
              in.result[k] = std::atan2(a.cross(b).norm(), a.dot(b));
            }))
      .peer("Eigen", "Eigen, acos", each([](angle_inputs& in, std::size_t k) {
              const Eigen::Vector3d &a = in.eigen[k], &b = in.eigen[in.next(k)];
              in.result[k] = std::acos(a.dot(b) / (a.norm() * b.norm()));
            }))
      .plain(each([](angle_inputs& in, std::size_t k) {
        in.result[k] = plain::arc(in.plain_space[k], in.plain_space[in.next(k)]);
      }));
}

void add_turns(long n) {
  angle_row("vector3d::rotate about an axis, over an array", n)
      .ours(each([](angle_inputs& in, std::size_t k) {
        in.store(k, in.space[k].rotate(vector3d(axis.x, axis.y, axis.z), in.angles[k]));
      }))
      .peer("Eigen", "Eigen AngleAxis", each([](angle_inputs& in, std::size_t k) {
              const Eigen::Vector3d along = Eigen::Vector3d(axis.x, axis.y, axis.z).normalized();
              const Eigen::Vector3d v = Eigen::AngleAxisd(-in.angles[k], along) * in.eigen[k];
              in.store(k, v.x(), v.y(), v.z());
            }))
      .plain(each(
          [](angle_inputs& in, std::size_t k) { in.store(k, plain::rotate(in.plain_space[k], axis, in.angles[k])); }));
  angle_row("polar form of a vector3d, over an array", n)
      .ours(each([](angle_inputs& in, std::size_t k) {
        const polarvector3d p(in.space[k]);
        in.store(k, p.alpha, p.beta, p.len);
      }))
      .peer("other", "std::atan2", each([](angle_inputs& in, std::size_t k) {
              const plain::vec3& v = in.plain_space[k];
              const double a = std::atan2(v.y, v.x);
              const double flat = v.x * v.x + v.y * v.y;
              in.store(k, a < 0 ? a + 2 * pi : a, std::atan2(v.z, std::sqrt(flat)), std::sqrt(flat + v.z * v.z));
            }))
      .plain(each([](angle_inputs& in, std::size_t k) {
        const plain::polar p = plain::polar_careful(in.plain_space[k]);
        in.store(k, p.alpha, p.beta, p.len);
      }));
  angle_row("vector3d of a polar form, over an array", n)
      .ours(each([](angle_inputs& in, std::size_t k) { in.store(k, vector3d(in.polar[k])); }))
      .peer("other", "loop", each([](angle_inputs& in, std::size_t k) {
              const plain::polar& p = in.plain_polar[k];
              const double flat = std::cos(p.beta) * p.len;
              in.store(k, std::cos(p.alpha) * flat, std::sin(p.alpha) * flat, std::sin(p.beta) * p.len);
            }))
      .plain(each([](angle_inputs& in, std::size_t k) { in.store(k, plain::cartesian(in.plain_polar[k])); }));
}

// Correctly rounded functions beside those of the C library, which are not. A thousand arguments that come again and
// again are known to the branch predictor in the end, a hundred thousand are not.
template <class Ours, class Theirs>
void add_function(const std::string& name, long n, values arguments, Ours ours, Theirs theirs) {
  angle_row(name, n)
      .ours(each([=](angle_inputs& in, std::size_t k) { in.result[k] = ours(arguments[k]); }))
      .peer("other", "C library", each([=](angle_inputs& in, std::size_t k) { in.result[k] = theirs(arguments[k]); }));
}

void add_functions(long n) {
  const auto from = [n](double scale, unsigned seed) {
    values v = random_values(std::size_t(n), seed);
    for (double& x : v) x *= scale;
    return v;
  };
  const auto sine = [](double x) { return std::sin(x); };
  const auto cosine = [](double x) { return std::cos(x); };
  add_function("sin over an array, to pi", n, from(pi, 62), tessarn::angles::sin, sine);
  add_function("cos over an array, to pi", n, from(pi, 63), tessarn::angles::cos, cosine);
  add_function("sin over an array, to 1e5", n, from(1e5, 64), tessarn::angles::sin, sine);
  add_function("sin over an array, to 1e300", n, from(1e300, 65), tessarn::angles::sin, sine);
  add_function("asin over an array", n, from(1, 66), tessarn::angles::asin, [](double x) { return std::asin(x); });
  add_function("acos over an array", n, from(1, 67), tessarn::angles::acos, [](double x) { return std::acos(x); });
}

}  // namespace

void add_angles() {
  for (const long n : {1000, 100000}) add_functions(n);
  add_complex_angles(1000);
  add_directions(1000);
  add_turns(1000);
}

}  // namespace bench
