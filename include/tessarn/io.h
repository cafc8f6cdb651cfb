/// \file
/// Printing, for those who want it: `operator<<` for every class and, where the standard library has
/// the header `format`, `std::formatter`. Nothing of it is in the compiled library, and tessarn.h
/// leaves it out.
///
///     cplx            1-2i
///     vector          (1, 2)
///     vector3d        (1, 2, 3)
///     polarvector3d   (alpha 0.5, beta 0.25, len 2)
///     vectormat       [(1, 2), (3, 4)]
///     mat, sqmat      [1, 2]          one line a row, no newline at the end; [] without entries
///                     [3, 4]
///     binom           1 - 2 x + 0 x^2 + 4 x^3          every coefficient; (empty) without any
///     hyperbinom      1 + 2 x + 3 y + 4 x y            in the order of the table
///     line3d          (0, 0, 0) to (1, 1, 1)
///     plane           origin (0, 0, 0), normal (0, 0, 1), axes (1, 0, 0) and (0, 1, 0)
///
/// Precision, width and the other settings of the stream, or the options of the format string, apply
/// to every single number: `std::setw(12) << m` and `std::format("{:12.4f}", m)` line up the columns
/// of a matrix. Fill and width do not apply to the text around the numbers, nor to an empty object.
///
/// Special results: a NaN prints without its sign, since the sign of a NaN means nothing and differs
/// between machines. Infinities and negative zeros print as the stream prints them. Points of a list
/// that are marked as deleted print as all others.
///
/// With its default of 6 digits a stream does not show all of a number: 17 digits
/// (`std::setprecision(17)`) distinguish any two. There is no `operator>>`.
///
/// Failure: the state of the stream tells, or its exceptions; a format string with options that a
/// number does not have is an error when the program is compiled.
#pragma once

#include <ostream>
#if defined(__has_include)
#if __has_include(<version>)
#include <version>
#endif
#endif
#if defined(__cpp_lib_format)
#include <algorithm>
#include <format>
#include <string_view>
#endif

#include "tessarn/tessarn.h"

namespace tessarn {
namespace detail {

/// Writes to a stream; the width that was set applies to each number, not to the first one. Takes the
/// width out of the stream, as any output does.
class stream_sink {
 public:
  explicit stream_sink(std::ostream& os) : os_(os), width_(os.width(0)) {}
  /// Text between numbers, without padding.
  void text(const char* s) { os_ << s; }
  /// A number with the settings of the stream.
  void number(real v) {
    os_.width(width_);
    os_ << (v != v ? std::fabs(v) : v);
  }

 private:
  std::ostream& os_;
  std::streamsize width_;
};

/// True for values that print with a minus sign: negative ones and -0.0, but no NaN.
inline bool prints_minus(real v) noexcept { return v == v && std::signbit(v); }

// One function a class says how it is written; Out is a stream_sink or a format_sink.

// One function a class says how it is written; Out is a stream_sink or a format_sink. Streams and
// formatters thus print one text.
//
// Three numbers with the text before each and a closing parenthesis.
template <class Out>
void write_triple(Out& out, const char* a, real x, const char* b, real y, const char* c, real z) {
  out.text(a);
  out.number(x);
  out.text(b);
  out.number(y);
  out.text(c);
  out.number(z);
  out.text(")");
}

/// A single number, such as an entry of a real matrix.
template <class Out>
void write(Out& out, real v) {
  out.number(v);
}

/// The sign of the imaginary part stands between the parts: 1-2i, nan+nani.
template <class Out>
void write(Out& out, const cplx& v) {
  out.number(v.re);
  out.text(prints_minus(v.im) ? "-" : "+");
  out.number(std::fabs(v.im));
  out.text("i");
}

/// The two coordinates.
template <class Out>
void write(Out& out, const vector& v) {
  out.text("(");
  out.number(v.x);
  out.text(", ");
  out.number(v.y);
  out.text(")");
}

/// The three coordinates.
template <class Out>
void write(Out& out, const vector3d& v) {
  write_triple(out, "(", v.x, ", ", v.y, ", ", v.z);
}

/// The fields with their names, since angles and a length read like coordinates. Angles in radians.
template <class Out>
void write(Out& out, const polarvector3d& v) {
  write_triple(out, "(alpha ", v.alpha, ", beta ", v.beta, ", len ", v.len);
}

/// The points in use, in their order.
template <class Out>
void write(Out& out, const vectormat& list) {
  out.text("[");
  for (ulong i = 0; i < list.count; ++i) {
    if (i > 0) out.text(", ");
    write(out, list.points[i]);
  }
  out.text("]");
}

/// One line a row. A matrix with a zero extent is not read: access to it never ends.
template <class Out, class Matrix>
void write_rows(Out& out, const Matrix& m, ulong width, ulong height) {
  if (width == 0 || height == 0) {
    out.text("[]");
    return;
  }
  for (ulong y = 0; y < height; ++y) {
    out.text(y == 0 ? "[" : "\n[");
    for (ulong x = 0; x < width; ++x) {
      if (x > 0) out.text(", ");
      write(out, m.get(x, y));
    }
    out.text("]");
  }
}

/// Any matrix of real or complex entries.
template <class Out, class T>
void write(Out& out, const mat<T>& m) {
  write_rows(out, m, m.getWidth(), m.getHeight());
}

/// A square matrix, as a matrix of as many columns as rows.
template <class Out, class T>
void write(Out& out, const sqmat<T>& m) {
  write_rows(out, m, m.getSize(), m.getSize());
}

/// The power of a variable after its coefficient: nothing for exponent 0, " x" for 1, " x^3" for 3.
/// The digits are written by hand, so that no setting of the stream (such as hexadecimal) changes
/// them.
template <class Out>
void write_power(Out& out, const char* variable, slong exponent) {
  if (exponent == 0) return;
  out.text(" ");
  out.text(variable);
  if (exponent == 1) return;
  char digits[12];
  char* first = digits + sizeof digits;
  *--first = '\0';
  for (slong e = exponent; e > 0; e /= 10) *--first = static_cast<char>('0' + e % 10);
  out.text("^");
  out.text(first);
}

/// The coefficient with the sign that joins it to the terms before it.
template <class Out>
void write_coefficient(Out& out, real c, bool first) {
  if (first) {
    out.number(c);
    return;
  }
  out.text(prints_minus(c) ? " - " : " + ");
  out.number(std::fabs(c));
}

/// Ascending powers; coefficients of 0 are written, too.
template <class Out>
void write(Out& out, const binom& p) {
  const slong n = static_cast<slong>(p.getcofcnt());
  if (n <= 0) out.text("(empty)");
  for (slong i = 0; i < n; ++i) {
    write_coefficient(out, p.get(i), i == 0);
    write_power(out, "x", i);
  }
}

/// In the order of the table: powers of x within each power of y.
template <class Out>
void write(Out& out, const hyperbinom& p) {
  const slong g = static_cast<slong>(p.getgrade());
  if (g <= 0) out.text("(empty)");
  for (slong j = 0; j < g; ++j) {
    for (slong i = 0; i < g; ++i) {
      write_coefficient(out, p.get(i, j), i == 0 && j == 0);
      write_power(out, "x", i);
      write_power(out, "y", j);
    }
  }
}

/// Both end points.
template <class Out>
void write(Out& out, const line3d& l) {
  write(out, l.start);
  out.text(" to ");
  write(out, l.end);
}

/// The four fields as they stand, whether or not they agree.
template <class Out>
void write(Out& out, const plane& p) {
  out.text("origin ");
  write(out, p.origin);
  out.text(", normal ");
  write(out, p.normal);
  out.text(", axes ");
  write(out, p.axis1);
  out.text(" and ");
  write(out, p.axis2);
}

/// What every operator<< below does.
template <class T>
std::ostream& print(std::ostream& os, const T& v) {
  stream_sink out(os);
  write(out, v);
  return os;
}

}  // namespace detail
}  // namespace tessarn

/// Each writes one object in the form shown at the top of this file and returns the stream. The width
/// of the stream is 0 afterwards, its other settings are as they were.
inline std::ostream& operator<<(std::ostream& os, const cplx& v) { return tessarn::detail::print(os, v); }
inline std::ostream& operator<<(std::ostream& os, const ::vector& v) { return tessarn::detail::print(os, v); }
inline std::ostream& operator<<(std::ostream& os, const vector3d& v) { return tessarn::detail::print(os, v); }
inline std::ostream& operator<<(std::ostream& os, const polarvector3d& v) { return tessarn::detail::print(os, v); }
inline std::ostream& operator<<(std::ostream& os, const vectormat& v) { return tessarn::detail::print(os, v); }
/// Matrices of real or complex entries, one line a row.
template <class T>
std::ostream& operator<<(std::ostream& os, const mat<T>& m) {
  return tessarn::detail::print(os, m);
}
template <class T>
std::ostream& operator<<(std::ostream& os, const sqmat<T>& m) {
  return tessarn::detail::print(os, m);
}
inline std::ostream& operator<<(std::ostream& os, const binom& p) { return tessarn::detail::print(os, p); }
inline std::ostream& operator<<(std::ostream& os, const hyperbinom& p) { return tessarn::detail::print(os, p); }
inline std::ostream& operator<<(std::ostream& os, const line3d& l) { return tessarn::detail::print(os, l); }
inline std::ostream& operator<<(std::ostream& os, const plane& p) { return tessarn::detail::print(os, p); }

#if defined(__cpp_lib_format)

namespace tessarn {
namespace detail {

/// Writes to the output of a std::format call, each number by the formatter that read the options.
template <class Context>
class format_sink {
 public:
  format_sink(const std::formatter<real>& numbers, Context& context) : numbers_(numbers), context_(context) {}
  void text(std::string_view s) { context_.advance_to(std::copy(s.begin(), s.end(), context_.out())); }
  void number(real v) { context_.advance_to(numbers_.format(v != v ? std::fabs(v) : v, context_)); }

 private:
  const std::formatter<real>& numbers_;
  Context& context_;
};

/// Takes the format options of a real number: `{:12.4f}`, `{:+e}`. Without options a number has the
/// shortest text that reads back as the number itself, unlike in a stream.
template <class T>
struct value_formatter : std::formatter<real> {
  template <class Context>
  typename Context::iterator format(const T& v, Context& context) const {
    format_sink<Context> out(*this, context);
    write(out, v);
    return context.out();
  }
};

}  // namespace detail
}  // namespace tessarn

// The names are qualified because the bases are looked up in std, which has a vector of its own.
template <>
struct std::formatter<::cplx> : tessarn::detail::value_formatter<::cplx> {};
template <>
struct std::formatter<::vector> : tessarn::detail::value_formatter<::vector> {};
template <>
struct std::formatter<::vector3d> : tessarn::detail::value_formatter<::vector3d> {};
template <>
struct std::formatter<::polarvector3d> : tessarn::detail::value_formatter<::polarvector3d> {};
template <>
struct std::formatter<::vectormat> : tessarn::detail::value_formatter<::vectormat> {};
template <class T>
struct std::formatter<::mat<T>> : tessarn::detail::value_formatter<::mat<T>> {};
template <class T>
struct std::formatter<::sqmat<T>> : tessarn::detail::value_formatter<::sqmat<T>> {};
template <>
struct std::formatter<::binom> : tessarn::detail::value_formatter<::binom> {};
template <>
struct std::formatter<::hyperbinom> : tessarn::detail::value_formatter<::hyperbinom> {};
template <>
struct std::formatter<::line3d> : tessarn::detail::value_formatter<::line3d> {};
template <>
struct std::formatter<::plane> : tessarn::detail::value_formatter<::plane> {};

#endif
