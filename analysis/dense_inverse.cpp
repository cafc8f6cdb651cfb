#include "analysis/dense_inverse.h"

#include <algorithm>

#include "matrix/factors.h"

namespace tessarn::analysis {

namespace {

constexpr double upwards = 1.01;  // above what the sums of bounds lose

}  // namespace

dense_inverse::dense_inverse(const double_system& s)
    : system_(s),
      kernels_(detail::system_kernels_in_use()),
      size_(s.size()),
      stride_(s.stride()),
      columns_(column_count * stride_),
      inverse_(s.room(0)),
      rest_(s.room(1)),
      correction_(s.room(2)),
      spare_(s.room(3)) {
  detail::multiply_inverses(s.lower(), s.upper(), size_, rest_);
  for (std::size_t i = 0; i < size_; ++i) {
    double* row = inverse_ + s.order(i) * stride_;
    const std::size_t end = (size_ + 7) / 8 * 8;  // what the kernel wrote
    std::copy(rest_ + i * stride_, rest_ + i * stride_ + end, row);
    std::fill(row + end, row + stride_, 0.0);
  }
  std::fill_n(column(ones), stride_, 1.0);
}

void dense_inverse::magnify(const double* v, double* sums) const {
  kernels_.column_sums(rows_of(inverse_), detail::matrix_shape::full, true, v, sums);
}

// E' = I - A' R'.
void dense_inverse::subtract_product(bool accurately) {
  const double* a = system_.scaled_entries();
  std::fill_n(rest_, size_ * stride_, 0.0);
  for (std::size_t i = 0; i < size_; ++i) rest_[i * stride_ + i] = 1;
  if (!accurately) return detail::subtract_transposed_product(a, inverse_, size_, rest_);
  kernels_.split_all(a, size_ * stride_, correction_, spare_);
  kernels_.subtract_accurately({a, correction_, spare_, 1, stride_, inverse_, rest_, size_, stride_, false});
}

// E is off by what its sums lose, a fraction of I + |R| |A|, and by |R| times what entries of A lost when they were
// scaled.
bool dense_inverse::prove(bool accurately) {
  subtract_product(accurately);
  double *sums = column(departure_sums), *off = column(uncertain), *w = column(weights);
  const double loss = accurately ? chain_loss(size_ + 1) * 0x1p-106 * upwards : system_.gamma();
  const double* a = system_.scaled_entries();
  kernels_.row_sums(rows_of(a), true, true, column(ones), w);
  kernels_.row_sums(rows_of(a), false, true, column(ones), off);
  double norm = 0, inverse_norm = 0;
  for (std::size_t i = 0; i < size_; ++i) {
    w[i] += off[i];
    norm = std::max(norm, w[i]);
    w[i] = loss * w[i] + tiny(size_);
  }
  magnify(column(ones), off);
  for (std::size_t i = 0; i < size_; ++i) inverse_norm = std::max(inverse_norm, off[i]);
  reciprocal_condition_ = norm * inverse_norm >= 1 ? 1 / (norm * inverse_norm) : 1;
  magnify(w, off);
  kernels_.column_sums(rows_of(rest_), detail::matrix_shape::full, true, column(ones), sums);
  for (std::size_t i = 0; i < size_; ++i) {
    off[i] = (off[i] + loss + tiny(size_) + 0x1p-53 * sums[i]) * upwards;
    sums[i] = (sums[i] + off[i]) * upwards;
    if (!(sums[i] < 0.25)) return false;
    departure_ = std::max(departure_, sums[i]);
    uncertainty_ = std::max(uncertainty_, off[i]);
  }
  return true;
}

// With d the bounds of the rows of |E|, e of what E is off, c the largest magnitudes of the columns of R, and T the sum
// of m terms formed in double precision, T_1 = E R and T_k+1 = E R + E T_k,
//   |A^-1 - R - T|_ij <= (d_i max d^m + e_i + d_i max e) c_j / (1 - max d)^2 + w d_i c_j
// where w bounds the roundings: g = n u / (1 - n u) of the first product, of the later ones g max d, and u of each sum.
bool dense_inverse::refine() {
  kernels_.row_largest(inverse_, size_, size_, stride_, column(largest));
  double power = departure_;
  int terms = 1;
  for (; terms < 12 && power * departure_ > 0x1p-70; ++terms) power *= departure_;
  std::fill_n(correction_, size_ * stride_, 0.0);
  detail::add_product(inverse_, rest_, size_, correction_);
  if (terms > 1) {
    double* kept = system_.lower();
    std::copy(correction_, correction_ + size_ * stride_, kept);
    for (int k = 1; k < terms; ++k) {
      std::fill_n(spare_, size_ * stride_, 0.0);
      detail::add_product(correction_, rest_, size_, spare_);
      for (std::size_t i = 0; i < size_ * stride_; ++i) spare_[i] += kept[i];
      std::swap(correction_, spare_);
    }
  }
  const double gap = 1 / (1 - departure_);
  const double rounding = system_.gamma() * (1 + 1.5 * departure_ + 1.5 / (static_cast<double>(size_) + 2)) * gap;
  for (std::size_t i = 0; i < size_; ++i) {
    const double d = column(departure_sums)[i];
    double& bound = column(row_bounds)[i];
    bound = ((d * power + column(uncertain)[i] + d * uncertainty_ * gap) * gap * gap + rounding * d) * upwards +
            tiny(size_);
    if (!(bound <= 0x1p-60)) return false;
  }
  for (std::size_t c = 0; c < size_; ++c)
    if (!(column(largest)[c] < 0x1p200)) return false;
  return true;
}

}  // namespace tessarn::analysis
