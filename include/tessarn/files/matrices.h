/// \file
/// Matrices from files and into files: Matrix Market and .npy. A part of tessarn/files.h.
#pragma once

#include "tessarn/files/npy.h"
#include "tessarn/mat.h"
#include "tessarn/views.h"

namespace tessarn::files {

/// How a matrix is read.
struct matrix_options {
  /// The most entries that a matrix may have, zeros included. A file of three lines can announce billions.
  std::size_t most_entries = 100000000;
  /// Infinities and NaN are entries; otherwise they are a failure.
  bool keep_not_finite = false;
};

/// A matrix of reals. With a state other than ok() it is empty.
struct real_matrix {
  file_state state;
  mat<long double> matrix;
};

/// A matrix of complex numbers. With a state other than ok() it is empty.
struct complex_matrix {
  file_state state;
  mat<cplx> matrix;
};

namespace detail {

/// A matrix while it is read: the parts of complex entries follow each other.
struct entries {
  std::size_t rows = 0, columns = 0, parts = 1;
  std::vector<real> values;  // row by row
};

enum class symmetry { general, symmetric, skew, hermitian };

/// One Matrix Market file: its banner, its sizes, its entries.
class market_reader {
 public:
  market_reader(std::string_view text, const matrix_options& o) : in_(text), o_(o) {}

  file_state read(entries& m) {
    file_state s = banner();
    if (s.ok()) s = sizes(m);
    if (!s.ok()) return s;
    s = coordinates_ ? read_coordinates(m) : read_array(m);
    std::string_view line;
    if (s.ok() && next_line(line)) s = bad("something stands behind the last entry");
    return s;
  }

 private:
  file_state bad(const std::string& reason) const { return failure(problem::wrong_format, reason, in_.number()); }

  file_state banner() {
    std::string_view line;
    if (!in_.next(line) || line.substr(0, 14) != "%%MatrixMarket") return bad("this is no Matrix Market file");
    std::string words[4];
    std::size_t at = 14, column = 0;
    for (std::string& word : words) word = lower(next_word(line, at, column));
    if (words[0] != "matrix" || (words[1] != "coordinate" && words[1] != "array"))
      return failure(problem::not_supported, "only matrices in coordinates or arrays are read", 1);
    coordinates_ = words[1] == "coordinate";
    pattern_ = words[2] == "pattern";
    complex_ = words[2] == "complex";
    if (!pattern_ && !complex_ && words[2] != "real" && words[2] != "integer" && words[2] != "double")
      return failure(problem::not_supported, in_quotes(words[2]) + " is no known kind of entry", 1);
    if (words[3] == "general")
      symmetry_ = symmetry::general;
    else if (words[3] == "symmetric")
      symmetry_ = symmetry::symmetric;
    else if (words[3] == "skew-symmetric")
      symmetry_ = symmetry::skew;
    else if (words[3] == "hermitian" && complex_)
      symmetry_ = symmetry::hermitian;
    else
      return failure(problem::not_supported, in_quotes(words[3]) + " is no known symmetry of such entries", 1);
    if (pattern_ && !coordinates_) return bad("an array has no pattern");
    return {};
  }

  // The next line that is neither blank nor a comment.
  bool next_line(std::string_view& line) {
    while (in_.next(line))
      if (!trim(line).empty() && line.front() != '%') return true;
    return false;
  }

  // `count` counts on one line, and nothing else.
  file_state read_counts(std::string_view line, std::size_t count, std::size_t* counts, std::size_t& at) {
    for (std::size_t i = 0; i < count; ++i) {
      std::size_t column = 0;
      const std::string_view word = next_word(line, at, column);
      if (!parse_count(word, counts[i]))
        return failure(problem::not_a_number, in_quotes(word) + " is no whole number from 0 on", in_.number(), column);
    }
    return {};
  }
  file_state end_of_line(std::string_view line, std::size_t at) const {
    if (trim(line.substr(at)).empty()) return {};
    return failure(problem::wrong_columns, "more numbers than the kind of matrix has", in_.number(), at + 2);
  }

  file_state sizes(entries& m) {
    std::string_view line;
    if (!next_line(line)) return failure(problem::cut_short, "the file ends before the sizes", in_.number());
    std::size_t counts[3] = {}, at = 0;
    file_state s = read_counts(line, coordinates_ ? 3 : 2, counts, at);
    if (s.ok()) s = end_of_line(line, at);
    if (!s.ok()) return s;
    m.rows = counts[0];
    m.columns = counts[1];
    stored_ = counts[2];
    m.parts = complex_ ? 2 : 1;
    if (symmetry_ != symmetry::general && m.rows != m.columns) return bad("a symmetric matrix is not square");
    std::size_t all = 0;
    if (!multiply(m.rows, m.columns, all) || all > o_.most_entries || all > 0xFFFFFFFFu || m.rows > 0xFFFFFFFFu ||
        m.columns > 0xFFFFFFFFu)
      return failure(problem::too_large, "the matrix has more entries than are allowed", in_.number());
    if (!coordinates_ && all / 2 > in_.rest().size()) return ends();  // each entry takes a line
    m.values.assign(all * m.parts, 0);
    return {};
  }

  file_state ends() const { return failure(problem::cut_short, "the file ends before its last entry", in_.number()); }

  file_state read_value(std::string_view line, std::size_t& at, std::size_t parts, double* v) {
    v[0] = 1;  // of a pattern
    for (std::size_t k = 0; !pattern_ && k < parts; ++k) {
      std::size_t column = 0;
      v[k] = 0;
      const std::string_view word = next_word(line, at, column);
      const parsed p = parse_number(word, '.', v[k]);
      if (word.empty())
        return failure(problem::wrong_columns, "fewer numbers than the kind of matrix has", in_.number());
      if (p == parsed::number || (p == parsed::not_finite && o_.keep_not_finite && !std::isfinite(v[k]))) continue;
      return number_failure(p, word, in_.number(), column);
    }
    return end_of_line(line, at);
  }

  // Adds to the entry and to the one that the symmetry gives.
  void store(entries& m, std::size_t row, std::size_t column, const double* v) const {
    add(m, row, column, v, 1, 1);
    if (symmetry_ == symmetry::general || row == column) return;
    const int sign = symmetry_ == symmetry::skew ? -1 : 1;
    add(m, column, row, v, sign, symmetry_ == symmetry::hermitian ? -1 : sign);
  }
  static void add(entries& m, std::size_t row, std::size_t column, const double* v, int re_sign, int im_sign) {
    const std::size_t place = (row * m.columns + column) * m.parts;
    m.values[place] += static_cast<real>(re_sign * v[0]);
    if (m.parts == 2) m.values[place + 1] += static_cast<real>(im_sign * v[1]);
  }

  file_state read_coordinates(entries& m) {
    for (std::size_t i = 0; i < stored_; ++i) {
      std::string_view line;
      if (!next_line(line)) return ends();
      std::size_t place[2] = {}, at = 0;
      double v[2] = {};
      file_state s = read_counts(line, 2, place, at);
      if (s.ok()) s = read_value(line, at, m.parts, v);
      if (!s.ok()) return s;
      if (place[0] < 1 || place[0] > m.rows || place[1] < 1 || place[1] > m.columns)
        return bad("an entry lies outside the matrix");
      if (symmetry_ != symmetry::general && place[0] < place[1])
        return bad("an entry above the diagonal of a symmetric matrix");
      if (symmetry_ == symmetry::skew && place[0] == place[1])
        return bad("an entry on the diagonal of a skew-symmetric matrix");
      store(m, place[0] - 1, place[1] - 1, v);
    }
    return {};
  }

  // Column by column; of symmetric matrices from the diagonal on, of skew-symmetric ones below it.
  file_state read_array(entries& m) {
    for (std::size_t column = 0; column < m.columns; ++column) {
      const std::size_t first = symmetry_ == symmetry::general ? 0 : column + (symmetry_ == symmetry::skew);
      for (std::size_t row = first; row < m.rows; ++row) {
        std::string_view line;
        if (!next_line(line)) return ends();
        double v[2] = {};
        std::size_t at = 0;
        const file_state s = read_value(line, at, m.parts, v);
        if (!s.ok()) return s;
        store(m, row, column, v);
      }
    }
    return {};
  }

  lines in_;
  const matrix_options& o_;
  bool coordinates_ = false, pattern_ = false, complex_ = false;
  symmetry symmetry_ = symmetry::general;
  std::size_t stored_ = 0;
};

/// An array of one or two dimensions as a matrix; one dimension makes a column.
inline file_state from_array(array&& a, const matrix_options& o, entries& m) {
  if (!a.state.ok()) return a.state;
  if (a.shape.empty() || a.shape.size() > 2)
    return failure(problem::wrong_format,
                   "the array has " + std::to_string(a.shape.size()) + " dimensions, not 1 or 2");
  m.rows = a.shape[0];
  m.columns = a.shape.size() == 2 ? a.shape[1] : 1;
  m.parts = a.complex ? 2 : 1;
  m.values = std::move(a.values);
  if (m.rows > 0xFFFFFFFFu || m.columns > 0xFFFFFFFFu || m.values.size() / m.parts > o.most_entries ||
      m.values.size() / m.parts > 0xFFFFFFFFu)
    return failure(problem::too_large, "the matrix has more entries than are allowed");
  for (std::size_t i = 0; !o.keep_not_finite && i < m.values.size(); ++i)
    if (!std::isfinite(m.values[i]))
      return failure(problem::not_finite, "entry " + std::to_string(i / m.parts) + " is not finite");
  return {};
}

inline file_state read_entries(std::string_view bytes, const matrix_options& o, entries& m) {
  if (bytes.substr(0, 6) == "\x93NUMPY") return from_array(parse_npy(bytes), o, m);
  const file_state s = check_encoding(bytes);
  return s.ok() ? market_reader(bytes, o).read(m) : s;
}

}  // namespace detail

/// Takes a Matrix Market or a .npy file in memory apart, which its first bytes tell. Matrix Market: arrays and
/// coordinates; real, integer and pattern entries (a pattern gives ones); general, symmetric and skew-symmetric.
/// Entries that a coordinate file names twice are added up. .npy: one dimension gives a column, two give a matrix.
///
/// \code
/// const char* text = "%%MatrixMarket matrix coordinate real symmetric\n2 2 2\n1 1 4\n2 1 3\n";
/// const auto m = tessarn::files::parse_matrix(text);
/// assert(m.state.ok() && m.matrix.get(0, 1) == 3 && m.matrix.get(1, 0) == 3 && m.matrix.get(1, 1) == 0);
/// \endcode
///
/// Failure: not_supported for complex entries, which parse_complex_matrix() reads.
/// Cost: O(size of the file + number of entries). Memory: twice the entries. Throws: std::bad_alloc.
[[nodiscard]] inline real_matrix parse_matrix(std::string_view bytes, const matrix_options& o = {}) {
  real_matrix result;
  detail::entries m;
  result.state = detail::read_entries(bytes, o, m);
  if (result.state.ok() && m.parts == 2)
    result.state = detail::failure(problem::not_supported, "the entries are complex");
  if (!result.state.ok()) return result;
  result.matrix.create(m.columns, m.rows);
  std::copy(m.values.begin(), m.values.end(), result.matrix.getData());
  return result;
}

/// Takes a file apart as parse_matrix() does, with complex entries or real ones, which get the imaginary part 0;
/// hermitian matrices are read, too.
[[nodiscard]] inline complex_matrix parse_complex_matrix(std::string_view bytes, const matrix_options& o = {}) {
  complex_matrix result;
  detail::entries m;
  result.state = detail::read_entries(bytes, o, m);
  if (!result.state.ok()) return result;
  result.matrix.create(m.columns, m.rows);
  for (std::size_t i = 0; i < m.values.size() / m.parts; ++i)
    result.matrix.getData()[i] = cplx(m.values[i * m.parts], m.parts == 2 ? m.values[2 * i + 1] : 0);
  return result;
}

/// Reads a matrix of reals from a file; the content tells the format.
[[nodiscard]] inline real_matrix read_matrix(const std::filesystem::path& file, const matrix_options& o = {}) {
  return detail::parse_file(file, [&](std::string_view bytes) { return parse_matrix(bytes, o); });
}

/// Reads a matrix of complex numbers from a file; the content tells the format.
[[nodiscard]] inline complex_matrix read_complex_matrix(const std::filesystem::path& file,
                                                        const matrix_options& o = {}) {
  return detail::parse_file(file, [&](std::string_view bytes) { return parse_complex_matrix(bytes, o); });
}

/// \name Matrices as the content of a file
/// Text has the fewest digits that read back as the number itself. Matrix Market files are dense arrays without a
/// symmetry. Cost: O(number of entries). Throws: std::bad_alloc.
/// @{
[[nodiscard]] inline std::string format_matrix_market(const matrix_view& m) {
  std::string out = "%%MatrixMarket matrix array real general\n" + std::to_string(m.rows()) + ' ' +
                    std::to_string(m.columns()) + '\n';
  for (std::size_t c = 0; c < m.columns(); ++c)
    for (std::size_t r = 0; r < m.rows(); ++r) {
      detail::append_number(out, m(r, c));
      out += '\n';
    }
  return out;
}
[[nodiscard]] inline std::string format_matrix_market(const complex_view& m) {
  std::string out = "%%MatrixMarket matrix array complex general\n" + std::to_string(m.rows()) + ' ' +
                    std::to_string(m.columns()) + '\n';
  for (std::size_t c = 0; c < m.columns(); ++c)
    for (std::size_t r = 0; r < m.rows(); ++r) {
      detail::append_number(out, m(r, c).re);
      out += ' ';
      detail::append_number(out, m(r, c).im);
      out += '\n';
    }
  return out;
}
[[nodiscard]] inline std::string format_npy(const matrix_view& m) {
  return detail::format_array(m.rows(), m.columns(), false, [&m](std::string& out, std::size_t r, std::size_t c) {
    detail::append_binary(out, static_cast<double>(m(r, c)));
  });
}
[[nodiscard]] inline std::string format_npy(const complex_view& m) {
  return detail::format_array(m.rows(), m.columns(), true, [&m](std::string& out, std::size_t r, std::size_t c) {
    detail::append_binary(out, static_cast<double>(m(r, c).re));
    detail::append_binary(out, static_cast<double>(m(r, c).im));
  });
}
/// @}

/// Writes a matrix by the ending of the name: .npy, or Matrix Market (any other ending).
[[nodiscard]] inline file_state write_matrix(const std::filesystem::path& file, const matrix_view& m) {
  return save(file, detail::ending(file) == ".npy" ? format_npy(m) : format_matrix_market(m));
}
[[nodiscard]] inline file_state write_matrix(const std::filesystem::path& file, const complex_view& m) {
  return save(file, detail::ending(file) == ".npy" ? format_npy(m) : format_matrix_market(m));
}

}  // namespace tessarn::files
