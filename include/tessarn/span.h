/// \file
/// Views of rows and columns: a pointer, a count and a distance. Nothing is owned; a view holds as
/// long as the storage of the object that gave it, so not beyond a member that creates, resizes,
/// assigns or ends that object.
///
/// Views are values: copying one copies no objects, and a constant view of objects that may be
/// changed still allows to change them (`span<const T>` does not). Every member is constexpr, never
/// throws and takes a constant time. Indices are not checked, and do not wrap as those of matrices
/// do.
#pragma once

#include <cstddef>
#include <iterator>

#include "tessarn/scalar.h"

namespace tessarn {

/// A view of `size()` neighbouring objects, such as a row of a matrix. It converts to std::span in
/// C++20.
///
/// \code
/// mat<long double> m{{1, 2, 3}, {4, 5, 6}};
/// tessarn::real sum = 0;
/// for (tessarn::real v : m.row(1)) sum += v;
/// assert(sum == 15);
/// \endcode
///
/// \tparam T the type of the objects; const for a view that only reads
template <class T>
class span {
 public:
  using value_type = std::remove_cv_t<T>;

  /// An empty view; data() is null.
  constexpr span() noexcept : first_(nullptr), size_(0) {}
  /// The objects from first on; first may be null when size is 0.
  constexpr span(T* first, std::size_t size) noexcept : first_(first), size_(size) {}
  /// The first object.
  constexpr T* data() const noexcept { return first_; }
  /// The number of objects.
  constexpr std::size_t size() const noexcept { return size_; }
  /// Whether there are none. (The classes' own empty() releases storage; this one asks.)
  constexpr bool empty() const noexcept { return size_ == 0; }
  /// Pointers are the iterators.
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
/// m.column(0)[1] = 7;                      // writes into the matrix
/// assert(m.get(0, 1) == 7);
/// const auto last = m.column(2);
/// std::sort(last.begin(), last.end(), std::greater<>());
/// assert(m.get(2, 0) == 6);
/// \endcode
///
/// Writing through a view stores the value as it is: the rule that a matrix stores 0.0 in place of a
/// quiet NaN belongs to its members.
template <class T>
class strided_span {
 public:
  using value_type = std::remove_cv_t<T>;

  /// Goes from object to object of the view. It holds the first object, the distance and a number, so
  /// that the end of a view is no pointer beyond the storage.
  class iterator {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = std::remove_cv_t<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    /// Belongs to no view; only to be assigned to.
    constexpr iterator() noexcept : first_(nullptr), stride_(0), i_(0) {}
    /// Object i of a view.
    constexpr iterator(T* first, std::size_t stride, std::size_t i) noexcept
        : first_(first), stride_(static_cast<difference_type>(stride)), i_(static_cast<difference_type>(i)) {}
    constexpr T& operator*() const noexcept { return first_[i_ * stride_]; }
    constexpr T* operator->() const noexcept { return first_ + i_ * stride_; }
    constexpr T& operator[](difference_type n) const noexcept { return first_[(i_ + n) * stride_]; }
    constexpr iterator& operator++() noexcept { return *this += 1; }
    constexpr iterator& operator--() noexcept { return *this += -1; }
    constexpr iterator operator++(int) noexcept {
      const iterator before = *this;
      ++i_;
      return before;
    }
    constexpr iterator operator--(int) noexcept {
      const iterator before = *this;
      --i_;
      return before;
    }
    constexpr iterator& operator+=(difference_type n) noexcept {
      i_ += n;
      return *this;
    }
    constexpr iterator& operator-=(difference_type n) noexcept { return *this += -n; }
    friend constexpr iterator operator+(iterator a, difference_type n) noexcept { return a += n; }
    friend constexpr iterator operator+(difference_type n, iterator a) noexcept { return a += n; }
    friend constexpr iterator operator-(iterator a, difference_type n) noexcept { return a -= n; }
    friend constexpr difference_type operator-(const iterator& a, const iterator& b) noexcept { return a.i_ - b.i_; }
    /// Compares numbers alone: meaningful for iterators of one view.
    friend constexpr bool operator==(const iterator& a, const iterator& b) noexcept { return a.i_ == b.i_; }
    friend constexpr bool operator!=(const iterator& a, const iterator& b) noexcept { return a.i_ != b.i_; }
    friend constexpr bool operator<(const iterator& a, const iterator& b) noexcept { return a.i_ < b.i_; }
    friend constexpr bool operator>(const iterator& a, const iterator& b) noexcept { return a.i_ > b.i_; }
    friend constexpr bool operator<=(const iterator& a, const iterator& b) noexcept { return a.i_ <= b.i_; }
    friend constexpr bool operator>=(const iterator& a, const iterator& b) noexcept { return a.i_ >= b.i_; }

   private:
    T* first_;
    difference_type stride_;
    difference_type i_;
  };

  /// An empty view; data() is null.
  constexpr strided_span() noexcept : first_(nullptr), size_(0), stride_(0) {}
  /// The objects first[0], first[stride], first[2 stride] and so on.
  constexpr strided_span(T* first, std::size_t size, std::size_t stride) noexcept
      : first_(first), size_(size), stride_(stride) {}
  /// The first object; those between the objects of the view do not belong to it.
  constexpr T* data() const noexcept { return first_; }
  /// The number of objects of the view.
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  /// The distance from one object to the next, counted in objects.
  constexpr std::size_t stride() const noexcept { return stride_; }
  /// Iterators of random access, as std::sort wants them.
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
