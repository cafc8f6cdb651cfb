// Coordinates of points in arrays of their own, as the kernels read them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>

#include "analysis/doubled.h"
#include "analysis/kernels/kernels.h"
#include "analysis/kernels/shape_kernels.h"
#include "core/storage.h"
#include "tessarn/views.h"

namespace tessarn::analysis {

// Room for numbers that are written before they are read: inside the object for few.
class scratch {
 public:
  scratch() noexcept = default;
  double* take(std::size_t n) {
    if (n > few) many_.reset(new double[n]);
    return data();
  }
  double* data() noexcept { return many_ ? many_.get() : few_; }
  const double* data() const noexcept { return many_ ? many_.get() : few_; }

 private:
  static constexpr std::size_t few = 96;

  std::unique_ptr<double[]> many_;
  double few_[few];
};

// n rounded up to whole vectors of the kernels.
inline std::size_t whole_vectors(std::size_t n) { return detail::checked_sum(n, 7) / 8 * 8; }

// The points that count, one array for each coordinate. Behind the last one stand copies of the first.
class point_arrays {
 public:
  // All points, or those whose numbers are given.
  void copy(const column_view* columns, int dimension, std::size_t used, const std::size_t* numbers = nullptr) {
    used_ = used;
    room_ = whole_vectors(used);
    double* to = values_.take(detail::checked_product(static_cast<std::size_t>(dimension), room_));
    finite_ = true;
    for (int k = 0; k < dimension; ++k, to += room_) {
      const column_view& v = columns[k];
      if (numbers)
        for (std::size_t i = 0; i < used; ++i) to[i] = v[numbers[i]];
      else
        copy_all(v, to);
      for (std::size_t i = used; i < room_; ++i) to[i] = to[0];
      look(to, k);
    }
  }

  std::size_t size() const noexcept { return used_; }
  const double* column(int k) const noexcept { return values_.data() + static_cast<std::size_t>(k) * room_; }
  // Whether all numbers are finite; the ranges hold only then.
  bool finite() const noexcept { return finite_; }
  double least(int k) const noexcept { return least_[k]; }
  double greatest(int k) const noexcept { return greatest_[k]; }

 private:
  static void copy_all(const column_view& v, double* to) noexcept {
    const unsigned char* from = v.address();
    const std::size_t n = v.size(), step = v.bytes();
    for (std::size_t i = 0; i < n; ++i, from += step) std::memcpy(to + i, from, sizeof *to);
  }
  void look(const double* v, int k) noexcept {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    double ranges[24];
    std::fill_n(ranges, 8, infinite);
    std::fill_n(ranges + 8, 8, -infinite);
    std::fill_n(ranges + 16, 8, 0.0);
    detail::fit_kernels_in_use().include(v, room_, ranges);
    least_[k] = *std::min_element(ranges, ranges + 8);
    greatest_[k] = *std::max_element(ranges + 8, ranges + 16);
    for (int l = 16; l < 24; ++l) finite_ = finite_ && ranges[l] == 0;
  }

  scratch values_;
  std::size_t used_ = 0, room_ = 0;
  double least_[3] = {}, greatest_[3] = {};
  bool finite_ = true;
};

// The sum that partial sums make up: in the order of a tree.
inline doubled whole_sum(const double* partial) noexcept {
  const auto part = [&](int l) noexcept { return doubled(partial[l], partial[8 + l]); };
  return ((part(0) + part(1)) + (part(2) + part(3))) + ((part(4) + part(5)) + (part(6) + part(7)));
}
// As many sums as `values` has, from zeros on.
template <std::size_t N>
struct kernel_sums {
  double partial[N * 2 * detail::shape_partial_sums] = {};
  doubled sum(std::size_t k) const noexcept { return whole_sum(partial + 2 * detail::shape_partial_sums * k); }
};

inline detail::number_pair pair_of(doubled v) noexcept { return {v.high, v.low}; }

// Multiplies by 2^e as scaled() does.
inline detail::result_scale scale_of(int e) noexcept {
  const int first = std::clamp(e, -1000, 1000), rest = std::clamp(e - first, -1000, 1000);
  return {{power_of_two(first), power_of_two(rest)}};
}

}  // namespace tessarn::analysis
