/// \file
/// The point list. It needs a fit, so its sources stand above the polynomials.
#pragma once

#include <initializer_list>

#include "tessarn/detail/checked.h"
#include "tessarn/vectors.h"

/// A growable list of plane points with averaging, sorting and the removal of outliers.
///
/// \code
/// vectormat list{{0, 1}, {1, 1}, {2, 9}, {3, 1}};
/// list.add(vector(4, 1));
/// list.DeleteErrors(20);                   // (2, 9) is 6.4 above the mean around it
/// assert(list.size() == 4 && list[2] == vector(3, 1));
/// \endcode
///
/// A point whose x is exactly -1.0 is marked as deleted: DeleteErrors removes it, fits leave it out.
/// Copies are deep; a move empties its source. In sort, DeleteErrors and findline comparisons with NaN
/// are ordinary comparisons, so a NaN x is not the marker. Indices are 0 to count - 1 and not checked, unless
/// the program is compiled with TESSARN_CHECKED.
/// An operation that cannot allocate throws std::bad_alloc and leaves the list as it was.
///
/// The fields are public. A program that puts an array of its own there makes it with array new, since the list
/// releases it with array delete, and sets `capacity` to its length.
class TESSARN_API vectormat {
 public:
  ::vector* points;         ///< the storage, an array of at least `capacity` points; null when nothing was ever added
  tessarn::ulong count;     ///< the number of points in use
  tessarn::ulong capacity;  ///< the number of points that fit, a multiple of 1024 while the list grows by add()

  /// An empty list.
  vectormat() noexcept : points(nullptr), count(0), capacity(0) {}
  /// A deep copy with the same capacity.
  vectormat(const vectormat& o);
  /// A deep copy with the same capacity; `a = a` changes nothing.
  vectormat& operator=(const vectormat& o);
  virtual ~vectormat();
  /// Releases the storage; the list stays usable.
  virtual void empty();

  /// Appends a copy of v, which may be a point of this list. `capacity` of a full list grows by 1024, and adding n
  /// points takes O(n) steps. At most 2^32 - 1 points: more throws std::bad_array_new_length.
  void add(::vector& v);
  void operator+=(::vector& v);
  /// Removes point i; the later points move down and the vacated slot becomes (0, 0). An index at or
  /// beyond the last point removes the last one; an empty list stays as it is. O(count - i).
  void del(tessarn::ulong i);
  void operator-=(tessarn::ulong i);
  /// Multiplies the y of every point by k; x is left as it is.
  void operator*=(tessarn::real k);
  /// Exchanges x and y of every point.
  void flip();
  /// Sorts ascending by x, ties by y, with the result of a bubble sort for every input: a point with a NaN x
  /// stays where it is and no other passes it, and equal x with a NaN y keep their order. O(count log count). Allocates
  /// for long lists.
  void sort();
  /// The mean point; NaN for an empty list. Each coordinate is summed in two partial sums, even and odd
  /// indices of the first 4 floor(count/4) points, which are added before the rest follows in order; the sums are
  /// multiplied by 1/count.
  ::vector average();
  /// The direction (1, s) of the straight line fitted through the unmarked points, not normalised;
  /// (0, 1) when s is NaN. For a vertical line the system is singular, and s is the sum of x y.
  ::vector avdir();
  /// Marks every point whose y differs from the mean of its neighbourhood (up to 5 points on either
  /// side, itself included) by more than sqrt(limit), unless limit is 0; then removes all marked
  /// points and shrinks the storage to the exact number. A negative limit removes every point, except those whose
  /// neighbourhood has a NaN: their deviation is NaN, which is above no limit.
  void DeleteErrors(tessarn::real limit);
  /// Extracts the chain of points that follows the direction dir, starting at point 0, into a new list
  /// that the caller owns (delete it), and removes them from this one. A point joins when its direction
  /// from the last point of the chain is within 0.2 radians of dir; from 10 points on dir is the
  /// chain's avdir() and the tolerance 0.05. Point 1 is never examined. Null for fewer than two points. Allocates
  /// the new list and a new array for this one.
  [[nodiscard]] vectormat* findline(::vector dir);

  /// \name For constants and temporaries
  /// @{
  vectormat(vectormat&& o) noexcept : points(o.points), count(o.count), capacity(o.capacity) { o.forget(); }
  vectormat& operator=(vectormat&& o) noexcept;
  void add(const ::vector& v) { add(tessarn::detail::mutable_ref(v)); }
  void operator+=(const ::vector& v) { add(tessarn::detail::mutable_ref(v)); }
  ::vector average() const { return tessarn::detail::mutable_ref(*this).average(); }
  ::vector avdir() const { return tessarn::detail::mutable_ref(*this).avdir(); }
  /// @}

  /// \name As a container
  /// @{
  /// The points in their order, each added as by add().
  vectormat(std::initializer_list<::vector> list) : vectormat() {
    append(list.begin(), static_cast<tessarn::ulong>(list.size()));
  }
  /// Appends copies of the n points at p, which are not points of this list.
  void append(const ::vector* p, tessarn::ulong n);
  /// Appends copies of all points of a container, which is not this list.
  template <class Points, class = tessarn::detail::if_container<Points, ::vector>>
  void append(const Points& list) {
    append(list.data(), tessarn::detail::count(list.size()));
  }
  template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
  void append(const ::vector* p, N n) {
    append(p, tessarn::detail::count(n));
  }
  /// Makes room for n points in all: `capacity` becomes n unless it is larger already.
  void reserve(tessarn::ulong n);
  tessarn::ulong size() const noexcept { return count; }
  ::vector* data() noexcept { return points; }
  const ::vector* data() const noexcept { return points; }
  ::vector* begin() noexcept { return points; }
  const ::vector* begin() const noexcept { return points; }
  ::vector* end() noexcept { return points + count; }
  const ::vector* end() const noexcept { return points + count; }
#if defined(TESSARN_CHECKED)
  /// Point i; an index from count on stops the program.
  template <class = void>
  ::vector& operator[](tessarn::detail::index i) {
    i.where.require(i.value < count, "vectormat: the index is beyond the number of points");
    return points[i.value];
  }
  template <class = void>
  const ::vector& operator[](tessarn::detail::index i) const {
    i.where.require(i.value < count, "vectormat: the index is beyond the number of points");
    return points[i.value];
  }
#else
  /// Point i; i must be below count.
  ::vector& operator[](tessarn::ulong i) noexcept { return points[i]; }
  const ::vector& operator[](tessarn::ulong i) const noexcept { return points[i]; }
#endif
  /// @}

 private:
  void forget() noexcept {
    points = nullptr;
    count = capacity = 0;
  }
};

namespace tessarn {
using ::vectormat;
}

static_assert(sizeof(void*) != 8 || sizeof(vectormat) == 24,
              "a list is its virtual table pointer, the points and their numbers");
