/// \file
/// The parts of the overloads for constants, containers and 64-bit counts. They choose among members
/// and check counts; none of them computes a result.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "tessarn/scalar.h"

namespace tessarn::detail {

/// The object without const, for overloads that hand constants and temporaries to compiled members
/// which are declared with non-const references but change nothing. Never for a member that writes:
/// an object that is really constant may stand in memory that cannot be written.
template <class T>
inline T& mutable_ref(const T& object) noexcept {
  return const_cast<T&>(object);
}

/// The index i, not below the bound, wrapped into [0, bound) as if by repeated subtraction of the
/// bound. With a bound of 0 the function never returns: that is the documented behaviour of matrices
/// without entries. The volatile number keeps the compiler from taking the endless loop for undefined
/// behaviour.
/// Cost: one division; members call it only for an index that is out of range.
inline ulong wrap(ulong i, ulong bound) noexcept {
  const volatile ulong none = 0;
  while (bound == none) {
  }
  return i % bound;
}

/// The number type K of `k * v`: any integer or floating-point type.
template <class K>
using if_number = std::enable_if_t<std::is_arithmetic_v<K>>;

/// Enabled when A is T or a class derived from it, const or not, and a reference or not; used by
/// operators that are templates so that a program's own plain function or more specialised template
/// is preferred.
template <class A, class T>
using if_is = std::enable_if_t<std::is_base_of_v<T, std::remove_cv_t<std::remove_reference_t<A>>>>;

/// A wider integer than the library's 32-bit counts, such as std::size_t.
template <class N>
inline constexpr bool is_wide = std::is_integral_v<N> && (sizeof(N) > sizeof(ulong));

/// Enabled when all of them are integers.
template <class... N>
using if_counts = std::enable_if_t<(std::is_integral_v<N> && ...)>;

/// n as a 32-bit count; a negative n of 64 bits does not fit.
/// Throws std::bad_array_new_length for a count that does not fit: an object of that size cannot
/// exist.
template <class N>
inline ulong count(N n) {
  if constexpr (is_wide<N>) {
    if (static_cast<std::make_unsigned_t<N>>(n) > (std::numeric_limits<ulong>::max)())
      throw std::bad_array_new_length();
  }
  return static_cast<ulong>(n);
}

/// Enabled for a pointer to T when it points to constants or when one of the counts has 64 bits;
/// other calls, those with a null pointer constant among them, choose the documented overload.
template <class Pointer, class T, class... Counts>
using if_adapted_pointer = std::enable_if_t<std::is_convertible_v<Pointer, const T*> &&
                                            (!std::is_convertible_v<Pointer, T*> || (is_wide<Counts> || ...))>;

/// The pointer as the documented members declare it; they only read from it.
template <class T>
inline T* mutable_pointer(const T* p) noexcept {
  return const_cast<T*>(p);
}

/// Enabled for a contiguous container of T, such as std::vector<T>, std::array, std::span or
/// vectormat: a class with data(), which gives a pointer to T, and size().
template <class Container, class T>
using if_container =
    std::enable_if_t<std::is_convertible_v<decltype(std::declval<const Container&>().data()), const T*> &&
                     std::is_convertible_v<decltype(std::declval<const Container&>().size()), std::size_t>>;

/// No value. `a = {}` finds an overload for an empty list of these exactly, and no other assignment
/// does, since the constructor is private.
class no_value {
  no_value() = default;
};

}  // namespace tessarn::detail
