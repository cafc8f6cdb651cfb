// Fit of a plane to a cloud of points.
#include <CGAL/Simple_cartesian.h>
#include <CGAL/linear_least_squares_fitting_3.h>

#include <Eigen/Eigenvalues>
#include <Eigen/SVD>

#include "inputs.h"
#include "plain/plane_fit.h"

namespace bench {

namespace {

using kernel = CGAL::Simple_cartesian<double>;

struct cloud_inputs {
  explicit cloud_inputs(long size) : n(size), rotation(rotation_for(32.0 * double(n))) {
    for (int i = 0; i < rotation; ++i) {
      plain.push_back(plane_points(n, 40 + std::uint64_t(i)));
      ours.emplace_back();
      cgal.emplace_back();
      eigen.emplace_back(3, n);
      for (long k = 0; k < n; ++k) {
        const plain::vec3& p = plain.back()[std::size_t(k)];
        ours.back().emplace_back(p.x, p.y, p.z);
        cgal.back().emplace_back(p.x, p.y, p.z);
        eigen.back().col(k) = Eigen::Vector3d(p.x, p.y, p.z);
      }
    }
  }
  long n;
  int rotation;
  std::vector<std::vector<vector3d>> ours;
  std::vector<std::vector<plain::vec3>> plain;
  std::vector<std::vector<kernel::Point_3>> cgal;
  std::vector<Eigen::Matrix3Xd> eigen;
};

Eigen::Vector3d upwards(const Eigen::Vector3d& n) { return n.z() < 0 ? Eigen::Vector3d(-n) : n; }

void add(long n) {
  // The centroid, the extreme points, the second moments and one direct pass over the points for the
  // offset: about 40 operations a point. The offset needs the normal, and so one pass more than
  // those of the points themselves; the extreme points need not be looked for in all of them.
  const double bytes = sizeof(vector3d) + 3.0 * sizeof(double);
  row<cloud_inputs> r("plane fit", n, {40.0 * double(n), bytes * double(n), traffic::read});
  r.agree({1e-5}).note("a search of stated steps");
  r.ours([](cloud_inputs& in, int i) { return plane(in.ours[std::size_t(i)].data(), index(in.n)).normal; });
  r.peer("Eigen", "Eigen SVD", [](cloud_inputs& in, int i) -> Eigen::Vector3d {
    const Eigen::Matrix3Xd& p = in.eigen[std::size_t(i)];
    const Eigen::MatrixXd centred = (p.colwise() - p.rowwise().mean()).transpose();
    return upwards(Eigen::BDCSVD<Eigen::MatrixXd>(centred, Eigen::ComputeThinU | Eigen::ComputeThinV).matrixV().col(2));
  });
  r.peer("Eigen", "Eigen covariance", [](cloud_inputs& in, int i) -> Eigen::Vector3d {
    const Eigen::Matrix3Xd& p = in.eigen[std::size_t(i)];
    const Eigen::Matrix3Xd centred = p.colwise() - p.rowwise().mean();
    const Eigen::Matrix3d covariance = centred * centred.transpose();
    return upwards(Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(covariance).eigenvectors().col(0));
  });
  r.peer("other", "CGAL", [](cloud_inputs& in, int i) -> Eigen::Vector3d {
    kernel::Plane_3 fitted;
    CGAL::linear_least_squares_fitting_3(in.cgal[std::size_t(i)].begin(), in.cgal[std::size_t(i)].end(), fitted,
                                         CGAL::Dimension_tag<0>());
    const kernel::Vector_3 v = fitted.orthogonal_vector();
    return upwards(Eigen::Vector3d(v.x(), v.y(), v.z()).normalized());
  });
  if (n <= 10000) r.plain([](cloud_inputs& in, int i) { return plain::fit_plane(in.plain[std::size_t(i)]).normal; });
}

}  // namespace

void add_planes() {
  add(100);
  add(10000);
  add(1000000);
}

}  // namespace bench
