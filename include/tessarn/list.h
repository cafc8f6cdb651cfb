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
/// All other members treat it as an ordinary point. In sort, DeleteErrors and findline comparisons
/// with NaN are ordinary comparisons, so a NaN x is not the marker.
///
/// \code
/// vectormat marked{{0, 0}, {-1, 7}, {2, 4}};
/// assert(marked.size() == 3);              // it counts until it is removed
/// assert(marked.avdir() == vector(1, 2));  // the fit leaves it out
/// marked.DeleteErrors(0);                  // removes marked points, whatever their y
/// assert(marked.size() == 2);
/// \endcode
///
/// Indices are 0 to count - 1 and not checked, unless the program is compiled with TESSARN_CHECKED.
///
/// Failure: an operation that cannot allocate throws std::bad_alloc and leaves the list as it was
/// (append() keeps what it has appended). A list of more than 2^32 - 1 points cannot exist; what
/// would make one throws std::bad_array_new_length. Members that give a point show a failure as NaN.
///
/// Ownership: copies are deep; a move empties its source and leaves it usable. `points`, and every
/// pointer or reference to a point, holds until an operation takes new storage (growth beyond
/// `capacity`, DeleteErrors, findline, assignment) or the list ends. Several threads may read one
/// list at the same time.
///
/// The fields are public. A program that puts an array of its own there makes it with array new,
/// since the list releases it with array delete, and sets `capacity` to its length.
///
/// Memory: 24 bytes a point. When a list of more than 1024 points grows it takes room for twice its
/// points where there is the memory for it; `capacity` does not show that room.
class TESSARN_API vectormat {
 public:
  ::vector* points;         ///< the storage, an array of at least `capacity` points; null when nothing was ever added
  tessarn::ulong count;     ///< the number of points in use
  tessarn::ulong capacity;  ///< the number of points that fit, a multiple of 1024 while the list grows by add()

  /// An empty list; allocates nothing.
  vectormat() noexcept : points(nullptr), count(0), capacity(0) {}
  /// A deep copy with the same capacity. Cost: O(o.capacity).
  vectormat(const vectormat& o);
  /// A deep copy with the same capacity; `a = a` changes nothing. When the copy cannot be allocated
  /// this list stays as it was.
  vectormat& operator=(const vectormat& o);
  /// Releases the storage.
  virtual ~vectormat();
  /// Removes all points and releases the storage: `points` becomes null, `count` and `capacity` 0.
  /// The list stays usable.
  /// (Elsewhere a member of this name asks whether there are any; here write `size() == 0`.)
  virtual void empty();

  /// Appends a copy of v, which may be a point of this list. `capacity` of a full list grows by 1024.
  /// Throws: std::bad_alloc, or std::bad_array_new_length for more than 2^32 - 1 points; the list
  /// stays as it was.
  /// Cost: O(1) on average, so adding n points takes O(n) steps.
  void add(::vector& v);
  /// `list += v` is list.add(v).
  void operator+=(::vector& v);

  /// Removes point i; the later points move down and the vacated slot becomes (0, 0). `capacity`
  /// stays.
  /// Special results: an index at or beyond the last point removes the last one; an empty list stays
  /// as it is.
  /// Cost: O(count - i). To remove many points mark them with x = -1.0 and call DeleteErrors(0) once.
  void del(tessarn::ulong i);
  /// `list -= i` is list.del(i).
  void operator-=(tessarn::ulong i);
  /// Multiplies the y of every point by k; x is left as it is. Infinite ordinates times 0 become NaN.
  void operator*=(tessarn::real k);
  /// Exchanges x and y of every point. A point whose y was -1.0 is marked as deleted from then on,
  /// and a marked one no longer.
  void flip();

  /// Sorts ascending by x, ties by y, with the result of a bubble sort for every input: a point with
  /// a NaN x stays where it is and no other passes it, and equal x with a NaN y keep their order.
  /// Points that are equal (-0.0 and 0.0 among them) keep their order, too.
  /// Cost: O(count log count). From 400 points on a radix sort orders the x in O(count).
  /// Memory: a packed copy of 16 bytes a point, and room of that size to sort in. Throws
  /// std::bad_alloc; the list is then as it was.
  void sort();

  /// The mean point, marked points included.
  /// Special results: NaN in both coordinates for an empty list.
  /// Order of summation: each coordinate is summed in two partial sums, even and odd indices of the
  /// first 4 floor(count/4) points, which are added before the rest follows in order; the sums are
  /// multiplied by 1/count.
  ::vector average();

  /// The direction (1, s) of the straight line y = c + s x fitted through the unmarked points by
  /// least squares of their ordinates, as by binom::create with two coefficients. Not normalised, and
  /// always towards +x.
  /// Special results: (0, 1) when s is NaN. The system is singular for fewer than two different
  /// abscissas, and s is then the sum of x y, which tells nothing: 0 for an empty list, 36 for the
  /// vertical line through (3, 5) and (3, 7).
  /// Cost: O(count). Throws std::bad_alloc.
  ::vector avdir();

  /// Marks every point whose y differs from the mean of its neighbourhood (up to 5 points on either
  /// side, itself included) by more than sqrt(limit), unless limit is 0; then removes all marked
  /// points and shrinks the storage to the exact number.
  /// \param limit the square of the largest deviation that is left, in units of y squared: 4 keeps
  /// what is within 2
  ///
  /// Neighbours are those in the order of the list, so sort it first where it comes unsorted. Means
  /// are of all points as they were before the call; marked ones take part.
  /// Special results: with limit 0 or NaN only points that were marked before are removed. A negative
  /// limit removes every point, except those whose neighbourhood has a NaN: their deviation is NaN,
  /// which is above no limit. So is that of an infinite y, which stays while its neighbours go.
  /// Cost: O(count). Memory: one byte a point and the new array. Throws std::bad_alloc; the list is
  /// then as it was.
  void DeleteErrors(tessarn::real limit);

  /// Extracts the chain of points that follows the direction dir, starting at point 0, into a new
  /// list and removes them from this one. A point joins when its direction from the last point of the
  /// chain is within 0.2 radians of dir; from 10 points on dir is the chain's avdir() and the
  /// tolerance 0.05. Points are examined once, in the order of the list, and point 1 never.
  /// \param dir of any length. The angle to a zero vector counts as 0, so with dir = (0, 0) every
  /// point joins, until the chain has 10 points.
  /// \return a list that the caller owns (delete it); null for fewer than two points, which changes
  /// nothing
  ///
  /// Special results: a point that repeats the last of the chain joins, and so does one with a NaN,
  /// after which every point joins, since angles with NaN count as 0. Points that were marked before
  /// can join; those that do not are removed from this list.
  /// Cost: O(count). Memory: the new list, a copy of this one and a new array for it. Throws
  /// std::bad_alloc; this list is then as it was.
  [[nodiscard]] vectormat* findline(::vector dir);

  /// \name For constants and temporaries
  /// The members above with const operands, with the same results. A move takes the storage over and
  /// leaves the source empty; it neither allocates nor throws.
  /// @{
  vectormat(vectormat&& o) noexcept : points(o.points), count(o.count), capacity(o.capacity) { o.forget(); }
  vectormat& operator=(vectormat&& o) noexcept;
  void add(const ::vector& v) { add(tessarn::detail::mutable_ref(v)); }
  void operator+=(const ::vector& v) { add(tessarn::detail::mutable_ref(v)); }
  ::vector average() const { return tessarn::detail::mutable_ref(*this).average(); }
  ::vector avdir() const { return tessarn::detail::mutable_ref(*this).avdir(); }
  /// @}

  /// \name As a container
  /// What generic code expects of a container of points. None of it changes the results of the
  /// members above.
  /// @{
  /// The points in their order, each added as by add().
  vectormat(std::initializer_list<::vector> list) : vectormat() {
    append(list.begin(), static_cast<tessarn::ulong>(list.size()));
  }
  /// Appends copies of the n points at p, which are not points of this list, in their order. Each is
  /// added as by add(). Where memory runs out the points before that stay appended.
  void append(const ::vector* p, tessarn::ulong n);
  /// Appends copies of all points of a container, which is not this list: anything with data() and
  /// size().
  template <class Points, class = tessarn::detail::if_container<Points, ::vector>>
  void append(const Points& list) {
    append(list.data(), tessarn::detail::count(list.size()));
  }
  /// For counts of 64 bits. Throws std::bad_array_new_length when n does not fit 32 bits, and appends
  /// nothing.
  template <class N, class = std::enable_if_t<tessarn::detail::is_wide<N>>>
  void append(const ::vector* p, N n) {
    append(p, tessarn::detail::count(n));
  }
  /// Makes room for n points in all: `capacity` becomes n unless it is larger already. Never removes
  /// a point.
  /// Throws: std::bad_alloc, and the list stays as it was.
  void reserve(tessarn::ulong n);
  /// The number of points, marked ones included.
  tessarn::ulong size() const noexcept { return count; }
  /// The first point; null when nothing was ever added.
  ::vector* data() noexcept { return points; }
  const ::vector* data() const noexcept { return points; }
  /// For loops over all points, marked ones included. Adding a point ends the validity of all
  /// iterators.
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
