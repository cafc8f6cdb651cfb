/// \file
/// Arrays in NumPy's own files (.npy). A part of tessarn/files.h.
#pragma once

#include <algorithm>

#include "tessarn/files/binary.h"

namespace tessarn::files {

/// An array of any number of dimensions. With a state other than ok() it is empty.
struct array {
  file_state state;
  std::vector<std::size_t> shape;  ///< empty for a single number
  std::vector<real> values;        ///< the last index runs fastest, whatever the order in the file
  bool complex = false;            ///< each element is two values, the real and the imaginary part
};

namespace detail {

/// The header of a .npy file: a dictionary of Python with three entries.
struct npy_header {
  number_type type;
  bool complex = false, big_endian = false, fortran_order = false;
  std::vector<std::size_t> shape;
};

inline file_state bad_npy(const char* reason) {
  return failure(problem::wrong_format, std::string("the header of the .npy file ") + reason);
}

/// Reads the dictionary, whose entries may come in any order.
class npy_dictionary {
 public:
  explicit npy_dictionary(std::string_view text) : text_(text) {}

  file_state read(npy_header& h) {
    bool type = false, order = false, shape = false;
    if (!take('{')) return bad_npy("is no dictionary");
    while (!take('}')) {
      const std::string_view key = string();
      if (!take(':')) return bad_npy("is no dictionary");
      if (key == "descr") {
        if (peek() == '[') return failure(problem::not_supported, "arrays of records are not read");
        const file_state s = read_type(string(), h);
        if (!s.ok()) return s;
        type = true;
      } else if (key == "fortran_order") {
        h.fortran_order = word("True");
        if (!h.fortran_order && !word("False")) return bad_npy("has no valid order");
        order = true;
      } else if (key == "shape") {
        if (!read_shape(h.shape)) return bad_npy("has no valid shape");
        shape = true;
      } else {
        return bad_npy("has an unknown entry");
      }
      if (!take(',') && peek() != '}') return bad_npy("is no dictionary");
    }
    return type && order && shape ? file_state{} : bad_npy("lacks an entry");
  }

 private:
  char peek() {
    while (!text_.empty() && (text_[0] == ' ' || text_[0] == '\n' || text_[0] == '\t')) text_.remove_prefix(1);
    return text_.empty() ? '\0' : text_[0];
  }
  bool take(char c) {
    if (peek() != c || text_.empty()) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool word(std::string_view w) {
    peek();
    if (text_.substr(0, w.size()) != w) return false;
    text_.remove_prefix(w.size());
    return true;
  }
  std::string_view string() {
    const char quote = peek();
    if (quote != '\'' && quote != '"') return {};
    const auto end = text_.find(quote, 1);
    if (end == text_.npos) return {};
    const std::string_view s = text_.substr(1, end - 1);
    text_.remove_prefix(end + 1);
    return s;
  }
  bool read_shape(std::vector<std::size_t>& shape) {
    if (!take('(')) return false;
    while (!take(')')) {
      peek();
      std::size_t n = 0;
      const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), n);
      if (error != std::errc()) return false;
      text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
      if (peek() == 'L') text_.remove_prefix(1);  // as Python 2 wrote integers
      shape.push_back(n);
      if (!take(',') && peek() != ')') return false;
    }
    return true;
  }
  static file_state read_type(std::string_view s, npy_header& h) {
    const auto unsupported = [s] {
      return failure(problem::not_supported, "arrays of the type " + in_quotes(s) + " are not read");
    };
    if (s.size() != 3 && s.size() != 4) return unsupported();
    std::size_t size = 0;
    if ((s[0] != '<' && s[0] != '>' && s[0] != '|') || !parse_count(s.substr(2), size)) return unsupported();
    h.big_endian = s[0] == '>';
    h.complex = s[1] == 'c';
    h.type = {h.complex ? 'f' : s[1], h.complex ? size / 2 : size};
    const std::string types = "f4 f8 i1 i2 i4 i8 u1 u2 u4 u8 b1 ";
    if (types.find(h.type.kind + std::to_string(h.type.size) + ' ') == types.npos || (h.complex && size % 2 != 0))
      return unsupported();
    return {};
  }

  std::string_view text_;
};

/// Splits a file into its header and the numbers; a failure for what is no .npy file of the versions 1 to 3.
inline file_state split_npy(std::string_view bytes, npy_header& h, std::string_view& data) {
  if (bytes.substr(0, 6) != "\x93NUMPY") return failure(problem::wrong_format, "this is no .npy file");
  if (bytes.size() < 10) return failure(problem::cut_short, "the file ends within its header");
  const int version = bytes[6];
  if (version < 1 || version > 3) return failure(problem::not_supported, "only versions 1 to 3 of .npy files are read");
  const std::size_t before = version == 1 ? 10 : 12;
  if (bytes.size() < before) return failure(problem::cut_short, "the file ends within its header");
  const std::uint64_t length = bits_of(bytes.data() + 8, before - 8, false);
  if (length > bytes.size() - before) return failure(problem::cut_short, "the file ends within its header");
  data = bytes.substr(before + static_cast<std::size_t>(length));
  return npy_dictionary(bytes.substr(before, static_cast<std::size_t>(length))).read(h);
}

/// The place in C order of the element that stands at `i` in Fortran order.
inline std::size_t c_place(std::size_t i, const std::vector<std::size_t>& shape) {
  std::size_t place = 0, step = 1;
  for (const std::size_t n : shape) step *= n;
  for (const std::size_t n : shape) {
    step /= n;
    place += i % n * step;
    i /= n;
  }
  return place;
}

}  // namespace detail

/// Takes the bytes of a .npy file apart: versions 1 to 3, floating-point numbers of 4 and 8 bytes, complex ones of
/// them, integers and truth values, both byte orders, C and Fortran order.
///
/// \code
/// const vector points[] = {{0, 1}, {1, 3}};
/// const auto a = tessarn::files::parse_npy(tessarn::files::format_npy(tessarn::plane_points(points, 2)));
/// assert(a.state.ok() && a.shape.size() == 2 && a.shape[0] == 2 && a.shape[1] == 2);
/// assert(a.values[3] == 3);
/// \endcode
///
/// Failure: wrong_format, cut_short for less data than the shape asks for, and not_supported for other types, for data
/// after the array, and for an integer beyond 2^53 that no real equals: a digit is never lost without a word.
/// Cost: O(size of the file). Throws: std::bad_alloc.
[[nodiscard]] inline array parse_npy(std::string_view bytes) {
  using namespace detail;
  array a;
  npy_header h;
  std::string_view data;
  a.state = split_npy(bytes, h, data);
  if (!a.state.ok()) return a;
  const std::size_t parts = h.complex ? 2 : 1, element = h.type.size * parts;
  std::size_t count = 1, size = 0;
  // A size of 0 makes the array empty, however large the others are.
  if (std::find(h.shape.begin(), h.shape.end(), std::size_t{0}) != h.shape.end()) count = 0;
  bool fits = true;
  for (const std::size_t n : h.shape) fits = fits && multiply(count, n, count);
  if (!fits || !multiply(count, element, size) || size > data.size()) {
    a.state = failure(problem::cut_short, "the file ends before the array that its header announces");
    return a;
  }
  if (size < data.size()) {
    a.state = failure(problem::not_supported, "something stands behind the array");
    return a;
  }
  a.values.resize(count * parts);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t place = h.fortran_order ? c_place(i, h.shape) : i;
    for (std::size_t part = 0; part < parts; ++part) {
      double v = 0;
      if (!binary_number(data.data() + i * element + part * h.type.size, h.type, h.big_endian, v)) {
        a.values.clear();
        a.state =
            failure(problem::not_supported, "element " + std::to_string(i) + " is an integer that no real equals");
        return a;
      }
      a.values[place * parts + part] = static_cast<real>(v);
    }
  }
  a.shape = std::move(h.shape);
  a.complex = h.complex;
  return a;
}

/// Reads an array from a file, whose bytes are held in memory meanwhile.
[[nodiscard]] inline array read_npy(const std::filesystem::path& file) {
  return detail::parse_file(file, [](std::string_view bytes) { return parse_npy(bytes); });
}

namespace detail {

/// A .npy file of version 1 with 8-byte floating-point numbers, or pairs of them, in C order. `value(row, column)`
/// appends the bytes of an element.
template <class Append>
std::string format_array(std::size_t rows, std::size_t columns, bool complex, const Append& append) {
  std::string header = std::string("{'descr': '") + (complex ? "<c16" : "<f8") +
                       "', 'fortran_order': False, 'shape': (" + std::to_string(rows) + ", " + std::to_string(columns) +
                       "), }";
  header.append(63 - (10 + header.size()) % 64, ' ');  // the numbers begin at a multiple of 64 bytes
  header += '\n';
  std::string out("\x93NUMPY\x01\x00", 8);
  out += static_cast<char>(header.size() & 0xFF);
  out += static_cast<char>(header.size() >> 8);
  out += header;
  for (std::size_t r = 0; r < rows; ++r)
    for (std::size_t c = 0; c < columns; ++c) append(out, r, c);
  return out;
}

}  // namespace detail
}  // namespace tessarn::files
