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

// The points that count, part by part in arrays, one for each coordinate: whole copies of many points would cost more
// time, by their fresh memory, than copying the parts anew for every pass. Behind the last point stand copies of the
// first one of the part.
class point_arrays {
 public:
  static constexpr std::size_t part = 2048;

  // Looks at all points, or at those whose numbers are given; the views and the numbers must stay.
  void take(const column_view* columns, int dimension, std::size_t used, const std::size_t* numbers = nullptr) {
    std::copy_n(columns, dimension, columns_);
    numbers_ = numbers;
    dimension_ = dimension;
    used_ = used;
    loaded_ = 0;
    room_ = whole_vectors(std::min(used, part));
    values_.take(static_cast<std::size_t>(dimension) * room_);
    std::fill_n(partial_[0], sizeof partial_ / sizeof(double), 0.0);
    for (int k = 0; k < dimension; ++k) {
      std::fill_n(partial_[k], 8, std::numeric_limits<double>::infinity());
      std::fill_n(partial_[k] + 8, 8, -std::numeric_limits<double>::infinity());
    }
    for (std::size_t i = 0; i < used; i += part) {
      load(i);
      for (int k = 0; k < dimension; ++k)
        detail::fit_kernels_in_use().include(column(k), whole_vectors(loaded_), partial_[k]);
    }
  }

  // Copies the points from number i on, a multiple of `part`, and gives how many these are.
  std::size_t load(std::size_t i) noexcept {
    if (loaded_ > 0 && begin_ == i) return loaded_;
    begin_ = i;
    loaded_ = std::min(used_ - i, part);
    double* to = values_.data();
    for (int k = 0; k < dimension_; ++k, to += room_) {
      const column_view& v = columns_[k];
      if (numbers_)
        for (std::size_t j = 0; j < loaded_; ++j) to[j] = static_cast<double>(v[numbers_[i + j]]);
      else
        copy(v.address() + i * v.bytes(), v.bytes(), loaded_, to);
      for (std::size_t j = loaded_; j < whole_vectors(loaded_); ++j) to[j] = to[0];
    }
    return loaded_;
  }

  std::size_t size() const noexcept { return used_; }
  // Of the points loaded.
  const double* column(int k) const noexcept { return values_.data() + static_cast<std::size_t>(k) * room_; }
  // Whether all numbers are finite; the ranges hold only then.
  bool finite() const noexcept {
    for (const double* p : {partial_[0], partial_[1], partial_[2]})
      if (std::any_of(p + 16, p + 24, [](double v) { return v != 0; })) return false;
    return true;
  }
  double least(int k) const noexcept { return *std::min_element(partial_[k], partial_[k] + 8); }
  double greatest(int k) const noexcept { return *std::max_element(partial_[k] + 8, partial_[k] + 16); }

 private:
  static void copy(const unsigned char* from, std::size_t step, std::size_t n, double* to) noexcept {
    for (std::size_t i = 0; i < n; ++i, from += step) std::memcpy(to + i, from, sizeof *to);
  }

  column_view columns_[3];
  const std::size_t* numbers_ = nullptr;
  int dimension_ = 0;
  std::size_t used_ = 0, room_ = 0, begin_ = 0, loaded_ = 0;
  scratch values_;
  double partial_[3][24];
};

// Runs over all points: f(i, count) when the points from number i on are loaded.
template <class F>
void for_each_part(point_arrays& a, F&& f) {
  for (std::size_t i = 0; i < a.size(); i += point_arrays::part) {
    const std::size_t count = a.load(i);
    f(i, count);
  }
}

// The extremes of the points before and of `next`, whose points are counted from i on.
inline void include(detail::residual_range& all, const detail::residual_range& next, std::size_t i) noexcept {
  if (i == 0) {
    all = next;
    return;
  }
  const auto take = [i](bool better, double& v, std::size_t& at, double w, std::size_t place) {
    if (!better) return;
    v = w;
    at = i + place;
  };
  take(next.lowest < all.lowest, all.lowest, all.lowest_at, next.lowest, next.lowest_at);
  take(next.highest > all.highest, all.highest, all.highest_at, next.highest, next.highest_at);
  take(next.largest > all.largest, all.largest, all.largest_at, next.largest, next.largest_at);
}

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
