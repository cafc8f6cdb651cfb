// Motions, planes, lines, circles, spheres and cylinders with a status and proved digits, and all zeros of polynomials.
#include <tessarn/align.h>
#include <tessarn/curve.h>
#include <tessarn/flat.h>
#include <tessarn/shapes.h>

#include <CGAL/Simple_cartesian.h>
#include <CGAL/linear_least_squares_fitting_3.h>
#include <gsl/gsl_poly.h>

#include <Eigen/Dense>
#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>

#include "inputs.h"

namespace bench {

namespace {

using kernel = CGAL::Simple_cartesian<double>;

// As many points as there are columns, for us and for the peers.
struct point_set {
  explicit point_set(const Eigen::Matrix3Xd& points) : eigen(points) {
    for (long k = 0; k < points.cols(); ++k) {
      ours.emplace_back(points(0, k), points(1, k), points(2, k));
      plane.emplace_back(points(0, k), points(1, k));
      cgal.emplace_back(points(0, k), points(1, k), points(2, k));
    }
  }
  Eigen::Matrix3Xd eigen;
  std::vector<vector3d> ours;
  std::vector<vector> plane;  // the first two coordinates
  std::vector<kernel::Point_3> cgal;
};

// Points near a plate, near a sphere of radius 5, and near a cylinder of radius 5 about the z axis, whose first two
// coordinates are near a circle.
struct shape_inputs {
  explicit shape_inputs(long size) : rotation(rotation_for(300.0 * double(size))) {
    for (int i = 0; i < rotation; ++i) {
      const auto seed = static_cast<std::uint64_t>(i);
      const auto [a, b] = matched_points(size, 7100 + seed);
      from.emplace_back(a);
      to.emplace_back(b);
      const values v = random_values(std::size_t(6 * size), 7200 + seed);
      Eigen::Matrix3Xd flat(3, size), ball(3, size), tube(3, size);
      for (long k = 0; k < size; ++k) {
        const double* p = v.data() + 6 * k;
        flat.col(k) = Eigen::Vector3d(10 * p[0], 7 * p[1], 0.01 * p[2] + 0.1 * p[0]);
        const double radius = 5 + 0.01 * p[5];
        ball.col(k) = radius * Eigen::Vector3d(p[0], p[1], p[2]).normalized() + Eigen::Vector3d(1, 2, 3);
        tube.col(k) = radius * Eigen::Vector3d(p[3], p[4], 0).normalized() + Eigen::Vector3d(1, 2, 9 * p[2]);
      }
      plate.emplace_back(flat);
      sphere.emplace_back(ball);
      cylinder.emplace_back(tube);
    }
  }
  int rotation;
  std::vector<point_set> from, to, plate, sphere, cylinder;
};

const point_set& of(const std::vector<point_set>& sets, int i) { return sets[std::size_t(i)]; }

// A direction without its sign.
values direction(const Eigen::Vector3d& d) {
  const double sign = d.cwiseAbs().maxCoeff() == -d.minCoeff() ? -1 : 1;
  return {sign * d.x(), sign * d.y(), sign * d.z()};
}

Eigen::Matrix3d axes_of(const Eigen::Matrix3Xd& p) {
  const Eigen::Matrix3Xd centred = p.colwise() - p.rowwise().mean();
  const Eigen::Matrix3d covariance = centred * centred.transpose();
  return Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(covariance).eigenvectors();
}

// Centre and radius by the method of Gauss and Newton, from the mean and the deviation.
template <int D>
values gauss_newton(const Eigen::Matrix3Xd& all) {
  const Eigen::Matrix<double, D, Eigen::Dynamic> p = all.topRows<D>();
  using unknowns = Eigen::Matrix<double, D + 1, 1>;
  Eigen::Matrix<double, D, 1> centre = p.rowwise().mean();
  double radius = std::sqrt((p.colwise() - centre).squaredNorm() / double(p.cols()));
  for (int step = 0; step < 50; ++step) {
    Eigen::Matrix<double, D + 1, D + 1> normal = Eigen::Matrix<double, D + 1, D + 1>::Zero();
    unknowns right = unknowns::Zero();
    for (long k = 0; k < p.cols(); ++k) {
      const Eigen::Matrix<double, D, 1> away = p.col(k) - centre;
      const double length = away.norm();
      unknowns row;
      row << away / length, 1.0;
      normal.noalias() += row * row.transpose();
      right += row * (length - radius);
    }
    const unknowns change = normal.ldlt().solve(right);
    centre += change.template head<D>();
    radius += change[D];
    if (change.norm() < 1e-13 * radius) break;
  }
  values v(centre.data(), centre.data() + D);
  v.push_back(radius);
  return v;
}

// The operations are those that double precision would need; each pass reads the points.
work passes(double operations, long n, double coordinates = 3) {
  return {operations * double(n), 8 * coordinates * double(n), traffic::read};
}

void add_alignment(long n) {
  row<shape_inputs> r("align", n, passes(60, n, 6));
  r.agree({1e-9}).note("doubled precision, with residuals");
  r.ours([](shape_inputs& in, int i) { return tessarn::align(of(in.from, i).ours, of(in.to, i).ours).rotation; });
  r.peer("Eigen", "Eigen umeyama", [](shape_inputs& in, int i) -> values {
    const Eigen::Matrix4d m = Eigen::umeyama(of(in.from, i).eigen, of(in.to, i).eigen, false);
    values v;
    for (int k = 0; k < 9; ++k) v.push_back(m(k / 3, k % 3));
    return v;
  });
}

void add_flatness(long n) {
  row<shape_inputs> r("flatness", n, passes(40, n));
  r.agree({1e-9}).note("doubled precision, with residuals and the minimum zone");
  r.ours([](shape_inputs& in, int i) { return tessarn::flatness(of(in.plate, i).ours).least_squares.normal; });
  r.peer("Eigen", "Eigen covariance",
         [](shape_inputs& in, int i) -> values { return direction(axes_of(of(in.plate, i).eigen).col(0)); });
  r.peer("CGAL", "CGAL least squares", [](shape_inputs& in, int i) -> values {
    const auto& p = of(in.plate, i).cgal;
    kernel::Plane_3 plane;
    CGAL::linear_least_squares_fitting_3(p.begin(), p.end(), plane, CGAL::Dimension_tag<0>());
    const auto n = plane.orthogonal_vector();
    return direction(Eigen::Vector3d(n.x(), n.y(), n.z()).normalized());
  });
}

void add_line(long n) {
  row<shape_inputs> r("fit_line", n, passes(40, n));
  r.agree({1e-9}).note("doubled precision, with residuals and standard errors");
  r.ours([](shape_inputs& in, int i) { return tessarn::fit_line(of(in.plate, i).ours).direction; });
  r.peer("Eigen", "Eigen covariance",
         [](shape_inputs& in, int i) -> values { return direction(axes_of(of(in.plate, i).eigen).col(2)); });
}

void add_round(long n) {
  row<shape_inputs> circle("fit_circle", n, passes(150, n, 2));
  circle.agree({1e-9}).note("doubled precision, with residuals and standard errors");
  circle.ours([](shape_inputs& in, int i) -> values {
    const tessarn::circle_fit f = tessarn::fit_circle(of(in.cylinder, i).plane);
    return {f.centre.x, f.centre.y, f.radius};
  });
  circle.peer("Eigen", "Eigen Gauss-Newton",
              [](shape_inputs& in, int i) -> values { return gauss_newton<2>(of(in.cylinder, i).eigen); });
  row<shape_inputs> sphere("fit_sphere", n, passes(200, n));
  sphere.agree({1e-9}).note("doubled precision, with residuals and standard errors");
  sphere.ours([](shape_inputs& in, int i) -> values {
    const tessarn::sphere_fit f = tessarn::fit_sphere(of(in.sphere, i).ours);
    return {f.centre.x, f.centre.y, f.centre.z, f.radius};
  });
  sphere.peer("Eigen", "Eigen Gauss-Newton",
              [](shape_inputs& in, int i) -> values { return gauss_newton<3>(of(in.sphere, i).eigen); });
  row<shape_inputs> cylinder("fit_cylinder", n, passes(300, n));
  cylinder.note("without a guess of the axis");
  cylinder.ours([](shape_inputs& in, int i) -> values {
    const tessarn::cylinder_fit f = tessarn::fit_cylinder(of(in.cylinder, i).ours);
    return {f.direction.x, f.direction.y, f.direction.z, f.radius};
  });
}

// Polynomials with real zeros alone.
struct zero_inputs {
  explicit zero_inputs(long degree) : rotation(31) {
    for (int i = 0; i < rotation; ++i) {
      values c{1};
      for (const double zero : random_values(std::size_t(degree), 7300 + std::uint64_t(i))) {
        c.push_back(0);
        for (std::size_t k = c.size() - 1; k > 0; --k) c[k] = c[k - 1] - zero * c[k];
        c[0] *= -zero;
      }
      coefficients.push_back(c);
    }
  }
  int rotation;
  std::vector<values> coefficients;
};

values real_parts(values v) {
  std::sort(v.begin(), v.end());
  return v;
}

void add_zeros(long degree) {
  const double d = double(degree);
  row<zero_inputs> r("zeros", degree, {20 * d * d * d, 8 * d, traffic::read});
  r.agree({1e-5}).note("proved, each between neighbouring doubles");
  r.ours([](zero_inputs& in, int i) { return tessarn::zeros(in.coefficients[std::size_t(i)], -9, 9).at; });
  r.peer("Eigen", "Eigen companion matrix", [](zero_inputs& in, int i) -> values {
    const values& c = in.coefficients[std::size_t(i)];
    const long n = long(c.size()) - 1;
    Eigen::MatrixXd companion = Eigen::MatrixXd::Zero(n, n);
    companion.diagonal(-1).setOnes();
    for (long k = 0; k < n; ++k) companion(k, n - 1) = -c[std::size_t(k)] / c[std::size_t(n)];
    const Eigen::VectorXd real = companion.eigenvalues().real();
    return real_parts(values(real.data(), real.data() + n));
  });
  r.peer("GSL", "gsl_poly_complex_solve", [](zero_inputs& in, int i) -> values {
    const values& c = in.coefficients[std::size_t(i)];
    gsl_poly_complex_workspace* const work = gsl_poly_complex_workspace_alloc(c.size());
    values z(2 * (c.size() - 1)), real;
    gsl_poly_complex_solve(c.data(), c.size(), work, z.data());
    gsl_poly_complex_workspace_free(work);
    for (std::size_t k = 0; k < z.size(); k += 2) real.push_back(z[k]);
    return real_parts(real);
  });
}

}  // namespace

void add_shapes() {
  for (const long n : {10, 1000, 100000}) add_alignment(n);
  for (const long n : {10, 1000, 100000}) add_flatness(n);
  for (const long n : {10, 1000, 100000}) add_line(n);
  for (const long n : {20, 1000}) add_round(n);
  for (const long n : {5, 10}) add_zeros(n);
}

}  // namespace bench
