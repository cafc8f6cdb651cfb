// Least-squares fits of polynomials through plane points and of surfaces through space points.
#include <gsl/gsl_multifit.h>

#include <Eigen/Dense>

#include "inputs.h"
#include "plain/poly.h"
#include "plain/surface.h"

namespace bench {

namespace {

// The normal equations as a careful user writes them: each point once, powers by running products,
// each distinct sum once; the number of coefficients is known to the compiler.
template <int M>
Eigen::VectorXd fit_by_running_powers(const std::vector<plain::vec2>& points) {
  double sums[2 * M - 1] = {}, moments[M] = {};
  for (const plain::vec2& p : points) {
    double power = 1;
    for (int k = 0; k < 2 * M - 1; ++k) {
      sums[k] += power;
      if (k < M) moments[k] += power * p.y;
      power *= p.x;
    }
  }
  Eigen::Matrix<double, M, M> a;
  for (int r = 0; r < M; ++r) {
    for (int c = 0; c < M; ++c) a(r, c) = sums[r + c];
  }
  return a.ldlt().solve(Eigen::Map<Eigen::Matrix<double, M, 1>>(moments));
}

template <int G>
Eigen::VectorXd fit_by_running_powers(const std::vector<plain::vec3>& points) {
  double sums[2 * G - 1][2 * G - 1] = {}, moments[G][G] = {};
  for (const plain::vec3& p : points) {
    double of_x[2 * G - 1];
    of_x[0] = 1;
    for (int k = 1; k < 2 * G - 1; ++k) of_x[k] = of_x[k - 1] * p.x;
    double of_y = 1;
    for (int j = 0; j < 2 * G - 1; ++j) {
      for (int i = 0; i < 2 * G - 1; ++i) sums[j][i] += of_y * of_x[i];
      if (j < G) {
        for (int i = 0; i < G; ++i) moments[j][i] += (of_y * p.z) * of_x[i];
      }
      of_y *= p.y;
    }
  }
  Eigen::Matrix<double, G * G, G * G> a;
  for (int r = 0; r < G * G; ++r) {
    for (int c = 0; c < G * G; ++c) a(r, c) = sums[r / G + c / G][r % G + c % G];
  }
  return a.ldlt().solve(Eigen::Map<Eigen::Matrix<double, G * G, 1>>(&moments[0][0]));
}

// The same where the number of coefficients is an argument, as it is in our fits.
Eigen::VectorXd fit_by_running_powers(const std::vector<plain::vec2>& points, int m) {
  std::vector<double> sums(std::size_t(2 * m - 1)), moments(std::size_t(m), 0.0);
  for (const plain::vec2& p : points) {
    double power = 1;
    for (std::size_t k = 0; k < moments.size(); ++k) {
      sums[k] += power;
      moments[k] += power * p.y;
      power *= p.x;
    }
    for (std::size_t k = moments.size(); k < sums.size(); ++k) {
      sums[k] += power;
      power *= p.x;
    }
  }
  Eigen::MatrixXd a(m, m);
  for (int r = 0; r < m; ++r) {
    for (int c = 0; c < m; ++c) a(r, c) = sums[std::size_t(r + c)];
  }
  return a.ldlt().solve(Eigen::Map<Eigen::VectorXd>(moments.data(), m));
}

Eigen::VectorXd fit_by_running_powers(const std::vector<plain::vec3>& points, int g) {
  const int side = 2 * g - 1;
  std::vector<double> sums(std::size_t(side * side)), moments(std::size_t(g * g));
  std::vector<double> of_x(std::size_t(side), 1.0);
  for (const plain::vec3& p : points) {
    for (int k = 1; k < side; ++k) of_x[std::size_t(k)] = of_x[std::size_t(k - 1)] * p.x;
    double of_y = 1;
    for (int j = 0; j < side; ++j) {
      double* sum = &sums[std::size_t(side * j)];
      for (int i = 0; i < side; ++i) sum[i] += of_y * of_x[std::size_t(i)];
      if (j < g) {
        double* moment = &moments[std::size_t(g * j)];
        const double of_y_z = of_y * p.z;
        for (int i = 0; i < g; ++i) moment[i] += of_y_z * of_x[std::size_t(i)];
      }
      of_y *= p.y;
    }
  }
  Eigen::MatrixXd a(g * g, g * g);
  for (int r = 0; r < g * g; ++r) {
    for (int c = 0; c < g * g; ++c) a(r, c) = sums[std::size_t(side * (r / g + c / g) + r % g + c % g)];
  }
  return a.ldlt().solve(Eigen::Map<Eigen::VectorXd>(moments.data(), g * g));
}

// The design matrix of GSL's general least squares is filled in every call, like our sums.
struct gsl_fit {
  gsl_fit(std::size_t n, std::size_t unknowns)
      : x(gsl_vector_alloc(unknowns)),
        covariance(gsl_matrix_alloc(unknowns, unknowns)),
        design(gsl_matrix_alloc(n, unknowns)),
        right(gsl_vector_alloc(n)),
        work(gsl_multifit_linear_alloc(n, unknowns), gsl_multifit_linear_free) {}
  gsl_vector& solve() {
    double residual = 0;
    gsl_multifit_linear(design.get(), right.get(), x.get(), covariance.get(), &residual, work.get());
    return *x;
  }
  gsl_vector_ptr x;
  gsl_matrix_ptr covariance, design;
  gsl_vector_ptr right;
  std::unique_ptr<gsl_multifit_linear_workspace, void (*)(gsl_multifit_linear_workspace*)> work;
};

template <int M>
struct fit_inputs {
  explicit fit_inputs(long size) : n(size), rotation(rotation_for(24.0 * double(n))), gsl(std::size_t(n), M) {
    for (int i = 0; i < rotation; ++i) {
      plain_points.push_back(curve_points(n, 8000 + std::uint64_t(i)));
      points.emplace_back();
      for (const plain::vec2& p : plain_points.back()) points.back().emplace_back(p.x, p.y);
    }
  }
  long n;
  int count = M;
  int rotation;
  std::vector<std::vector<vector>> points;
  std::vector<std::vector<plain::vec2>> plain_points;
  binom result;
  gsl_fit gsl;
};

template <int M>
row<fit_inputs<M>> fit_row(const std::string& peers, long n) {
  const products_and_sums point = powers_below(2 * M - 1) + products_and_sums{M - 1, 3 * M - 2};
  row<fit_inputs<M>> r("fit, " + std::to_string(M) + " coefficients" + peers, n,
                       {point.side_by_side() * double(n), sizeof(vector) * double(n), traffic::read});
  r.agree({1e-7});
  r.ours([](fit_inputs<M> & in, int i) -> auto& {
    in.result.create(in.points[std::size_t(i)].data(), index(in.n), index(in.count));
    return in.result;
  });
  return r;
}

template <int M>
void add_fit_of_any(long n) {
  fit_row<M>(", against any number", n)
      .note("the peer has the number as an argument, too")
      .peer("other", "running powers, any number",
            [](fit_inputs<M>& in, int i) { return fit_by_running_powers(in.plain_points[std::size_t(i)], in.count); });
}

template <int M>
void add_fit(long n) {
  using inputs = fit_inputs<M>;
  row<inputs> r = fit_row<M>("", n);
  r.note("correctly rounded powers; running powers know their number");
  r.peer("other", "running powers",
         [](inputs& in, int i) { return fit_by_running_powers<M>(in.plain_points[std::size_t(i)]); });
  r.peer("Eigen", "Eigen QR", [](inputs& in, int i) -> Eigen::VectorXd {
    Eigen::MatrixXd design(in.n, M);
    Eigen::VectorXd right(in.n);
    for (long k = 0; k < in.n; ++k) {
      const plain::vec2 p = in.plain_points[std::size_t(i)][std::size_t(k)];
      right(k) = p.y;
      double power = 1;
      for (int c = 0; c < M; ++c, power *= p.x) design(k, c) = power;
    }
    return design.householderQr().solve(right);
  });
  if (n <= 10000) {
    r.peer(
        "GSL", "gsl_multifit", [](inputs & in, int i) -> auto& {
          for (long k = 0; k < in.n; ++k) {
            const plain::vec2 p = in.plain_points[std::size_t(i)][std::size_t(k)];
            gsl_vector_set(in.gsl.right.get(), std::size_t(k), p.y);
            double power = 1;
            for (int c = 0; c < M; ++c, power *= p.x) {
              gsl_matrix_set(in.gsl.design.get(), std::size_t(k), std::size_t(c), power);
            }
          }
          return in.gsl.solve();
        });
    r.plain([](inputs& in, int i) { return plain::fit(in.plain_points[std::size_t(i)], M); });
  }
}

template <int G>
struct surface_inputs {
  explicit surface_inputs(long) : rotation(rotation_for(32.0 * double(n))), gsl(n, G * G) {
    for (int i = 0; i < rotation; ++i) {
      plain_points.push_back(surface_points(n, 9000 + std::uint64_t(i)));
      points.emplace_back();
      for (const plain::vec3& p : plain_points.back()) points.back().emplace_back(p.x, p.y, p.z);
    }
  }
  static constexpr std::size_t n = 10000;
  int grade = G;
  int rotation;
  std::vector<std::vector<vector3d>> points;
  std::vector<std::vector<plain::vec3>> plain_points;
  hyperbinom result;
  gsl_fit gsl;
};

template <int G>
row<surface_inputs<G>> surface_row(const std::string& peers) {
  using inputs = surface_inputs<G>;
  constexpr double n = double(inputs::n), mixed = (2 * G - 2) * (2 * G - 2);
  constexpr double distinct = (2 * G - 1) * (2 * G - 1);
  const products_and_sums powers = powers_below(2 * G - 1);
  const products_and_sums point = powers + powers + products_and_sums{mixed + G * G - 1, distinct - 1 + G * G};
  row<inputs> r("surface fit by grade, 10000 points" + peers, G,
                {n * point.side_by_side(), sizeof(vector3d) * n, traffic::read});
  r.agree({1e-7});
  r.ours([](inputs & in, int i) -> auto& {
    in.result.create(in.points[std::size_t(i)].data(), inputs::n, index(in.grade));
    return in.result;
  });
  return r;
}

template <int G>
void add_surface_of_any() {
  surface_row<G>(", against any grade")
      .note("the peer has the grade as an argument, too")
      .peer("other", "running powers, any grade", [](surface_inputs<G>& in, int i) {
        return fit_by_running_powers(in.plain_points[std::size_t(i)], in.grade);
      });
}

template <int G>
void add_surface() {
  using inputs = surface_inputs<G>;
  row<inputs> r = surface_row<G>("");
  r.note("correctly rounded powers; running powers know the grade");
  r.peer("other", "running powers",
         [](inputs& in, int i) { return fit_by_running_powers<G>(in.plain_points[std::size_t(i)]); });
  r.peer("Eigen", "Eigen normal equations", [](inputs& in, int i) -> Eigen::VectorXd {
    const auto& points = in.plain_points[std::size_t(i)];
    Eigen::Matrix<double, G * G, Eigen::Dynamic> design(G * G, inputs::n);
    Eigen::VectorXd right(inputs::n);
    for (std::size_t k = 0; k < inputs::n; ++k) {
      right(long(k)) = points[k].z;
      double of_y = 1;
      for (int j = 0; j < G; ++j, of_y *= points[k].y) {
        double power = of_y;
        for (int c = 0; c < G; ++c, power *= points[k].x) design(j * G + c, long(k)) = power;
      }
    }
    return (design * design.transpose()).ldlt().solve(design * right);
  });
  r.peer(
      "GSL", "gsl_multifit", [](inputs & in, int i) -> auto& {
        const auto& points = in.plain_points[std::size_t(i)];
        for (std::size_t k = 0; k < inputs::n; ++k) {
          gsl_vector_set(in.gsl.right.get(), k, points[k].z);
          double of_y = 1;
          for (int j = 0; j < G; ++j, of_y *= points[k].y) {
            double power = of_y;
            for (int c = 0; c < G; ++c, power *= points[k].x) {
              gsl_matrix_set(in.gsl.design.get(), k, std::size_t(j * G + c), power);
            }
          }
        }
        return in.gsl.solve();
      });
  if (G == 2) {
    r.plain([](inputs& in, int i) { return plain::fit_surface(in.plain_points[std::size_t(i)], {}, G); });
  }
}

}  // namespace

void add_fits() {
  add_fit<4>(100);
  add_fit<4>(10000);
  add_fit<4>(1000000);
  add_fit_of_any<4>(100);
  add_fit_of_any<4>(10000);
  add_fit_of_any<4>(1000000);
  add_fit<8>(100);
  add_fit<8>(10000);
  add_fit_of_any<8>(100);
  add_fit_of_any<8>(10000);
  add_surface<2>();
  add_surface<3>();
  add_surface<4>();
  add_surface_of_any<2>();
  add_surface_of_any<3>();
  add_surface_of_any<4>();
}

}  // namespace bench
