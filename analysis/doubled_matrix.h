// Matrices and columns of doubled numbers, for the factorisations of this room.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "analysis/doubled.h"
#include "analysis/kernels/systems.h"
#include "core/storage.h"

namespace tessarn::analysis {

// n values, zeros at first: inside the object up to some bytes of them, since a fit of few coefficients has a dozen
// such arrays and would else spend a quarter of its time on allocating them. Sizes that cannot be allocated throw as
// new[] does.
template <class T, std::size_t Inside = 512>
class numbers {
 public:
  explicit numbers(std::size_t n) : size_(n) {
    if (n > few) {
      many_.reset(new T[n]());
      data_ = many_.get();
    } else {
      std::fill_n(few_, n, T());
    }
  }
  numbers(numbers&& other) noexcept : size_(0) { *this = std::move(other); }
  numbers& operator=(numbers&& other) noexcept {
    many_ = std::move(other.many_);
    size_ = std::exchange(other.size_, 0);
    data_ = many_ ? many_.get() : few_;
    if (!many_) std::copy_n(other.few_, size_, few_);
    return *this;
  }
  T& operator[](std::size_t i) noexcept { return data_[i]; }
  const T& operator[](std::size_t i) const noexcept { return data_[i]; }
  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }

 private:
  static constexpr std::size_t few = Inside / sizeof(T);

  std::unique_ptr<T[]> many_;
  std::size_t size_;
  T* data_ = few_;
  T few_[few];
};

// A matrix of zeros at first. The high and the low parts have arrays of their own, so that the operations on rows,
// whose entries do not depend on each other, are vectorised.
class doubled_matrix {
 public:
  doubled_matrix(std::size_t rows, std::size_t columns)
      : rows_(rows), columns_(columns), high_(detail::checked_product(rows, columns)), low_(rows * columns) {}

  doubled_matrix clone() const {
    doubled_matrix copy(rows_, columns_);
    std::copy(high_.data(), high_.data() + high_.size(), copy.high_.data());
    std::copy(low_.data(), low_.data() + low_.size(), copy.low_.data());
    return copy;
  }

  std::size_t rows() const noexcept { return rows_; }
  std::size_t columns() const noexcept { return columns_; }
  doubled get(std::size_t r, std::size_t c) const noexcept { return {high_[r * columns_ + c], low_[r * columns_ + c]}; }
  void set(std::size_t r, std::size_t c, doubled v) noexcept {
    high_[r * columns_ + c] = v.high;
    low_[r * columns_ + c] = v.low;
  }
  double* high(std::size_t r) noexcept { return high_.data() + r * columns_; }
  double* low(std::size_t r) noexcept { return low_.data() + r * columns_; }
  const double* high(std::size_t r) const noexcept { return high_.data() + r * columns_; }
  const double* low(std::size_t r) const noexcept { return low_.data() + r * columns_; }

  void exchange_rows(std::size_t a, std::size_t b) noexcept {
    if (a == b) return;
    std::swap_ranges(high(a), high(a) + columns_, high(b));
    std::swap_ranges(low(a), low(a) + columns_, low(b));
  }

  // Row `to` += factor * another row, or row `from` of another matrix, from a column on. Where the factor is 0 nothing
  // is done.
  void add_row(std::size_t to, doubled factor, const doubled_matrix& other, std::size_t from,
               std::size_t first = 0) noexcept {
    add_row(to, factor, other, from, first, columns_);
  }
  // Adds in the columns from `first` to below `last` alone.
  void add_row(std::size_t to, doubled factor, const doubled_matrix& other, std::size_t from, std::size_t first,
               std::size_t last) noexcept {
    if (factor.high == 0) return;
    double* h = high(to) + first;
    double* l = low(to) + first;
    const double* oh = other.high(from) + first;
    const double* ol = other.low(from) + first;
    const std::size_t count = first < last ? last - first : 0;
    if (count >= worth_a_call) {
      detail::system_kernels_in_use().add_row(h, l, factor.high, factor.low, oh, ol, count);
      return;
    }
    for (std::size_t c = 0; c < count; ++c) {
      const doubled v = doubled(h[c], l[c]) + factor * doubled(oh[c], ol[c]);
      h[c] = v.high;
      l[c] = v.low;
    }
  }

  // As add_row, but losing some units of the magnitudes of both terms, as `with_product` does. Where the terms cancel
  // that is more than add_row loses.
  void add_products(std::size_t to, doubled factor, const doubled_matrix& other, std::size_t from, std::size_t first,
                    std::size_t last) noexcept {
    if (factor.high == 0) return;
    double* h = high(to);
    double* l = low(to);
    const double* oh = other.high(from);
    const double* ol = other.low(from);
    for (std::size_t c = first; c < last; ++c) {
      const doubled v = with_product({h[c], l[c]}, factor, {oh[c], ol[c]});
      h[c] = v.high;
      l[c] = v.low;
    }
  }

 private:
  static constexpr std::size_t worth_a_call = 8;  // entries; fewer are added before a kernel is called

  std::size_t rows_, columns_;
  numbers<double> high_, low_;
};

}  // namespace tessarn::analysis
