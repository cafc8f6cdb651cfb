// The inverse of a square matrix from its factors in double precision, with a proof that bounds its error.
#pragma once

#include <cstddef>

#include "analysis/double_system.h"

namespace tessarn::analysis {

// R near the inverse of the scaled matrix A of a double_system, which is factorised. R and E = I - R A stand
// transposed, row by row, since the lanes run along the rows of R'.
class dense_inverse {
 public:
  // Takes the matrices of the system's room, of which there are four, and of the inverses of the factors. The last
  // three and those of the inverses hold nothing that is needed after prove() alone.
  static constexpr std::size_t matrices = 4;
  explicit dense_inverse(const double_system& s);

  // Forms E, in double precision or as if in doubled precision, and bounds it, with what E itself is off. False when
  // the largest sum of a row of |E| is not below 1/4.
  bool prove(bool accurately);

  // A^-1 = R + E R + E^2 R + ... : adds as many terms as matter, and bounds the rest. False when the bound does not
  // reach 2^-60 of the largest entry of a column.
  bool refine();
  // After refine(): entry (r, c) of A^-1 as a doubled number, and the bound of its error.
  doubled entry(std::size_t r, std::size_t c) const noexcept {
    const std::size_t at = c * stride_ + r;
    return exact_sum(inverse_[at], correction_[at]);
  }
  double error(std::size_t r, std::size_t c) const noexcept { return column(row_bounds)[r] * column(largest)[c]; }

  double reciprocal_condition() const noexcept { return reciprocal_condition_; }
  double departure() const noexcept { return departure_; }
  const double* departures() const noexcept { return column(departure_sums); }  // bounds of the rows of |E|
  const double* transposed() const noexcept { return inverse_; }                // R'
  // sums = |R| v.
  void magnify(const double* v, double* sums) const;

 private:
  enum : std::size_t { ones, weights, largest, departure_sums, uncertain, row_bounds, column_count };

  void subtract_product(bool accurately);
  detail::square_rows rows_of(const double* entries) const noexcept { return {entries, size_, stride_}; }
  double* column(std::size_t i) noexcept { return columns_.data() + i * stride_; }
  const double* column(std::size_t i) const noexcept { return columns_.data() + i * stride_; }

  const double_system& system_;
  const detail::system_kernels& kernels_;
  std::size_t size_, stride_;
  detail::workspace<double, 256, 64> columns_;
  double *inverse_, *rest_, *correction_, *spare_;
  double departure_ = 0, uncertainty_ = 0, reciprocal_condition_ = 0;
};

}  // namespace tessarn::analysis
