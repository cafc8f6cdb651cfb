/// \file
/// The checked mode. A program that is compiled with TESSARN_CHECKED defined, in all its files, stops
/// with the file and line of the caller at an access to a matrix without entries, at an index beyond
/// the size, and at an operation on mismatched sizes. Without it, these have the documented results:
/// endless loops, wrapped indices, empty matrices or no action.
///
///     main.cpp:12: tessarn: vectormat: the index is beyond the number of points
///
/// The mode changes the headers alone; the compiled library is the same for all programs.
/// Defined in some files only, it gives one inline function two meanings, which no linker is bound to
/// report.
#pragma once

#if defined(TESSARN_CHECKED)

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <type_traits>

namespace tessarn::detail {

/// A place in the caller's source. As a default argument `here()` is evaluated where the call stands.
struct location {
  const char* file;  ///< as the compiler was given it
  int line;

  /// The place of the call that leaves both parameters out.
  static constexpr location here(const char* file = __builtin_FILE(), int line = __builtin_LINE()) noexcept {
    return {file, line};
  }
  /// Prints the place and the sentence to the error output and ends the program by std::abort, unless
  /// the condition holds. It never throws, so a caller cannot go on by mistake.
  void require(bool condition, const char* sentence) const noexcept {
    if (condition) return;
    std::fprintf(stderr, "%s:%d: tessarn: %s\n", file, line, sentence);
    std::abort();
  }
};

/// The right operand of an operator together with the place where the operator stands, since an
/// operator cannot take a third argument. It converts implicitly from the value and holds it for the
/// expression alone.
template <class T>
struct operand {
  const T& value;
  location where;
  operand(const T& v, location place = location::here()) noexcept : value(v), where(place) {}
};

/// An index between square brackets together with the place where it stands. Takes integers of any
/// type; a negative one becomes a large one and is beyond every size.
struct index {
  std::size_t value;
  location where;
  template <class I, class = std::enable_if_t<std::is_integral_v<I>>>
  index(I i, location place = location::here()) noexcept : value(static_cast<std::size_t>(i)), where(place) {}
};

}  // namespace tessarn::detail

/// The last parameter of an access function, and its test.
#define TESSARN_WHERE , tessarn::detail::location where = tessarn::detail::location::here()
#define TESSARN_REQUIRE(condition, sentence) where.require(condition, sentence)
/// Access functions become templates, which are never imported from a module.
#define TESSARN_ACCESS template <class = void>
#else
#define TESSARN_WHERE
#define TESSARN_REQUIRE(condition, sentence)
#define TESSARN_ACCESS
#endif
