/// \file
/// Views of rows and columns: a pointer, a count and a distance. Nothing is owned; a view holds as long as the
/// storage of the object that gave it.
#pragma once

#include <cstddef>
#include <iterator>

#include "tessarn/scalar.h"

namespace tessarn {

/// A view of `size()` neighbouring objects, such as a row of a matrix. It converts to std::span in C++20.
///
/// \code
/// mat<long double> m{{1, 2, 3}, {4, 5, 6}};
/// tessarn::real sum = 0;
/// for (tessarn::real v : m.row(1)) sum += v;
/// assert(sum == 15);
/// \endcode
template <class T>
class span {
 public:
  using value_type = std::remove_cv_t<T>;

  constexpr span() noexcept : first_(nullptr), size_(0) {}
  constexpr span(T* first, std::size_t size) noexcept : first_(first), size_(size) {}
  constexpr T* data() const noexcept { return first_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  constexpr T* begin() const noexcept { return first_; }
  constexpr T* end() const noexcept { return first_ + size_; }
  /// Object i; i must be below size().
  constexpr T& operator[](std::size_t i) const noexcept { return first_[i]; }

 private:
  T* first_;
  std::size_t size_;
};

/// A view of `size()` objects at equal distances, such as a column of a matrix.
///
/// \code
/// mat<long double> m{{1, 2, 3}, {4, 5, 6}};
/// assert(m.column(2).size() == 2 && m.column(2)[1] == 6);
/// \endcode
template <class T>
class strided_span {
 public:
  using value_type = std::remove_cv_t<T>;

  /// Goes from object to object of the view.
  class iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::remove_cv_t<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    constexpr iterator() noexcept : first_(nullptr), stride_(0), i_(0) {}
    constexpr iterator(T* first, std::size_t stride, std::size_t i) noexcept : first_(first), stride_(stride), i_(i) {}
    constexpr T& operator*() const noexcept { return first_[i_ * stride_]; }
    constexpr T* operator->() const noexcept { return first_ + i_ * stride_; }
    constexpr iterator& operator++() noexcept {
      ++i_;
      return *this;
    }
    constexpr iterator operator++(int) noexcept {
      const iterator before = *this;
      ++i_;
      return before;
    }
    friend constexpr bool operator==(const iterator& a, const iterator& b) noexcept { return a.i_ == b.i_; }
    friend constexpr bool operator!=(const iterator& a, const iterator& b) noexcept { return a.i_ != b.i_; }

   private:
    T* first_;
    std::size_t stride_;
    std::size_t i_;
  };

  constexpr strided_span() noexcept : first_(nullptr), size_(0), stride_(0) {}
  constexpr strided_span(T* first, std::size_t size, std::size_t stride) noexcept
      : first_(first), size_(size), stride_(stride) {}
  constexpr T* data() const noexcept { return first_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  /// The distance from one object to the next, counted in objects.
  constexpr std::size_t stride() const noexcept { return stride_; }
  constexpr iterator begin() const noexcept { return {first_, stride_, 0}; }
  constexpr iterator end() const noexcept { return {first_, stride_, size_}; }
  /// Object i; i must be below size().
  constexpr T& operator[](std::size_t i) const noexcept { return first_[i * stride_]; }

 private:
  T* first_;
  std::size_t size_;
  std::size_t stride_;
};

}  // namespace tessarn
