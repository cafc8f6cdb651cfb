// Product of square matrices into a new result.
#include "inputs.h"

namespace bench {

namespace {

struct product_inputs : square_inputs {
  explicit product_inputs(long size) : square_inputs(size) {
    for (int i = 0; i < rotation; ++i) {
      left.push_back(to_mat(rows[at(i)], n, n));
      right.push_back(to_mat(rows[next(i)], n, n));
      plain_left.push_back(to_plain(rows[at(i)], n, n));
    }
  }
  std::size_t at(int i) const { return static_cast<std::size_t>(i); }
  std::size_t next(int i) const { return static_cast<std::size_t>((i + 1) % rotation); }

  std::vector<real_matrix> left, right;
  std::vector<plain::matrix> plain_left;
};

}  // namespace

void add_products() {
  for (long n : {3, 4, 8, 16, 32, 64, 128, 256, 512}) {
    const double m = double(n);
    row<product_inputs> r("product", n, {2 * m * m * m, 24 * m * m, traffic::copy, 8 * m * m});
    r.agree({1e-12});
    r.ours([](product_inputs& in, int i) { return in.left[in.at(i)] * in.right[in.at(i)]; });
    r.peer("Eigen", "Eigen",
           [](product_inputs& in, int i) -> Eigen::MatrixXd { return in.eigen[in.at(i)] * in.eigen[in.next(i)]; });
    r.peer("LAPACK", "dgemm", [](product_inputs& in, int i) {
      const int k = static_cast<int>(in.n);
      Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> c(k, k);
      cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, k, k, k, 1.0, in.rows[in.at(i)].data(), k,
                  in.rows[in.next(i)].data(), k, 0.0, c.data(), k);
      return c;
    });
    r.plain(
        [](product_inputs& in, int i) { return plain::product(in.plain_left[in.at(i)], in.plain_left[in.next(i)]); });
  }
}

}  // namespace bench
