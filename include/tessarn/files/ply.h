/// \file
/// The vertices of PLY files. A part of tessarn/files.h.
#pragma once

#include "tessarn/files/binary.h"
#include "tessarn/vector3d.h"

namespace tessarn::files {

/// Points of space, and where in a file they stand. With a state other than ok() the points are those before the
/// failure.
struct space_cloud {
  file_state state;
  std::vector<vector3d> points;
  std::vector<std::size_t> lines;  ///< the line of each point; empty for binary files
};

namespace detail {

struct ply_property {
  bool list = false;
  number_type count;  // of a list
  number_type type;
  std::string name;
};

struct ply_element {
  std::string name;
  std::size_t count = 0;
  std::vector<ply_property> properties;
};

enum class ply_kind { ascii, little_endian, big_endian };

struct ply_header {
  ply_kind kind = ply_kind::ascii;
  std::vector<ply_element> elements;
};

inline bool ply_type(std::string_view name, number_type& t) {
  constexpr struct {
    const char *name, *other;
    number_type type;
  } types[] = {{"char", "int8", {'i', 1}},     {"uchar", "uint8", {'u', 1}},   {"short", "int16", {'i', 2}},
               {"ushort", "uint16", {'u', 2}}, {"int", "int32", {'i', 4}},     {"uint", "uint32", {'u', 4}},
               {"float", "float32", {'f', 4}}, {"double", "float64", {'f', 8}}};
  for (const auto& known : types) {
    if (name != known.name && name != known.other) continue;
    t = known.type;
    return true;
  }
  return false;
}

inline file_state bad_ply(const lines& in, const std::string& reason) {
  return failure(problem::wrong_format, reason, in.number());
}

/// One line of the header between its first and its last.
inline file_state read_ply_line(const lines& in, std::string_view line, ply_header& h, bool& has_format) {
  std::vector<std::string_view> words;
  std::size_t at = 0, column = 0;
  for (std::string_view word; !(word = next_word(line, at, column)).empty() && words.size() < 6;) words.push_back(word);
  if (words.empty() || words[0] == "comment" || words[0] == "obj_info") return {};
  if (words[0] == "format") {
    if (words.size() != 3) return bad_ply(in, "the format is incomplete");
    has_format = true;
    if (words[1] == "ascii")
      h.kind = ply_kind::ascii;
    else if (words[1] == "binary_little_endian")
      h.kind = ply_kind::little_endian;
    else if (words[1] == "binary_big_endian")
      h.kind = ply_kind::big_endian;
    else
      return failure(problem::not_supported, in_quotes(words[1]) + " is no known format", in.number());
    if (words[2] != "1.0") return failure(problem::not_supported, "only version 1.0 is read", in.number());
    return {};
  }
  if (words[0] == "element") {
    ply_element e;
    if (words.size() != 3 || !parse_count(words[2], e.count)) return bad_ply(in, "an element needs a name and a count");
    e.name = words[1];
    h.elements.push_back(std::move(e));
    return {};
  }
  if (words[0] != "property")
    return bad_ply(in, in_quotes(words[0]) + " does not belong into the header of a PLY file");
  ply_property p;
  p.list = words.size() > 1 && words[1] == "list";
  if (h.elements.empty() || words.size() != (p.list ? 5u : 3u)) return bad_ply(in, "a property is incomplete");
  if ((p.list && !ply_type(words[2], p.count)) || !ply_type(words[p.list ? 3 : 1], p.type))
    return bad_ply(in, "a property has an unknown type");
  if (p.list && p.count.kind == 'f') return bad_ply(in, "the count of a list is no integer");
  p.name = words.back();
  h.elements.back().properties.push_back(std::move(p));
  return {};
}

inline file_state read_ply_header(lines& in, ply_header& h) {
  std::string_view line;
  if (!in.next(line) || trim(line) != "ply") return failure(problem::wrong_format, "this is no PLY file");
  bool has_format = false;
  while (in.next(line)) {
    if (trim(line) == "end_header") return has_format ? file_state{} : bad_ply(in, "the header names no format");
    const file_state s = read_ply_line(in, line, h, has_format);
    if (!s.ok()) return s;
  }
  return failure(problem::cut_short, "the file ends within its header", in.number());
}

/// Which properties of a vertex are its coordinates.
inline file_state find_coordinates(const ply_element& e, std::size_t (&place)[3]) {
  for (std::size_t k = 0; k < 3; ++k) {
    place[k] = e.properties.size();
    for (std::size_t i = 0; i < e.properties.size(); ++i)
      if (e.properties[i].name == std::string(1, "xyz"[k]) && !e.properties[i].list) place[k] = i;
    if (place[k] == e.properties.size())
      return failure(problem::unknown_column, std::string("the vertices have no property ") + "xyz"[k]);
  }
  return {};
}

inline file_state ply_ends() {
  return failure(problem::cut_short, "the file ends before the elements that its header announces");
}

/// The elements of a binary file, up to the vertices.
class ply_binary {
 public:
  ply_binary(std::string_view data, bool big_endian) : data_(data), big_endian_(big_endian) {}

  /// Passes over an element, or gives the coordinates of its rows to `take`.
  template <class Take>
  file_state read(const ply_element& e, const Take& take) {
    if (e.properties.empty()) return {};
    std::size_t row = 0, size = 0;
    for (const ply_property& p : e.properties) row += p.list ? p.count.size : p.type.size;  // at least
    if (!multiply(row, e.count, size) || size > data_.size()) return ply_ends();
    std::vector<double> values(e.properties.size());
    for (std::size_t i = 0; i < e.count; ++i) {
      for (std::size_t k = 0; k < values.size(); ++k)
        if (!property(e.properties[k], values[k])) return ply_ends();
      const file_state s = take(values, i);
      if (!s.ok()) return s;
    }
    return {};
  }

 private:
  bool number(const number_type& t, double& v) {
    if (data_.size() < t.size) return false;
    binary_number(data_.data(), t, big_endian_, v);  // all integers of the format are exact
    data_.remove_prefix(t.size);
    return true;
  }
  bool property(const ply_property& p, double& v) {
    if (!p.list) return number(p.type, v);
    if (!number(p.count, v) || v < 0) return false;
    std::size_t size = 0;
    if (!multiply(static_cast<std::size_t>(v), p.type.size, size) || size > data_.size()) return false;
    data_.remove_prefix(size);
    return true;
  }

  std::string_view data_;
  bool big_endian_;
};

/// The elements of a file in text, one row a line.
class ply_text {
 public:
  explicit ply_text(lines in) : in_(in) {}

  template <class Take>
  file_state read(const ply_element& e, const Take& take) {
    if (e.properties.empty()) return {};
    std::vector<double> values(e.properties.size());
    std::string_view line;
    for (std::size_t i = 0; i < e.count; ++i) {
      do {
        if (!in_.next(line)) return ply_ends();
      } while (trim(line).empty());
      std::size_t at = 0;
      for (std::size_t k = 0; k < values.size(); ++k) {
        const file_state s = property(e.properties[k], line, at, values[k]);
        if (!s.ok()) return s;
      }
      if (!trim(line.substr(at)).empty())
        return failure(problem::wrong_columns, "more numbers than properties", in_.number(),
                       character_at(line, at) + 1);
      const file_state s = take(values, i);
      if (!s.ok()) return s;
    }
    return {};
  }
  std::size_t line() const { return in_.number(); }

 private:
  file_state property(const ply_property& p, std::string_view line, std::size_t& at, double& v) {
    file_state s = number(line, at, v);
    if (!p.list || !s.ok()) return s;
    if (!(v >= 0) || v != std::floor(v) || v > 4294967295.0)
      return failure(problem::wrong_format, "the count of a list is no integer", in_.number());
    double skipped = 0;
    for (double i = 0; i < v && s.ok(); ++i) s = number(line, at, skipped);
    return s;
  }
  file_state number(std::string_view line, std::size_t& at, double& v) {
    std::size_t column = 0;
    const std::string_view word = next_word(line, at, column);
    if (word.empty()) return failure(problem::wrong_columns, "fewer numbers than properties", in_.number());
    const parsed p = parse_number(word, '.', v);
    // Infinities and NaN are refused only in coordinates.
    if (p == parsed::number || (p == parsed::not_finite && word.size() < 10)) {
      if (p == parsed::not_finite && std::isfinite(v)) v = std::numeric_limits<double>::infinity();
      return {};
    }
    return number_failure(p, word, in_.number(), column);
  }

  lines in_;
};

}  // namespace detail

/// The vertices of a PLY file in text or in binary of either byte order: the properties x, y and z of the element
/// `vertex`. Other properties, lists and other elements are passed over.
///
/// \code
/// const std::string text = "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\n"
///                          "property float z\nproperty uchar red\nend_header\n1 2 3 255\n";
/// const auto cloud = tessarn::files::parse_ply(text);
/// assert(cloud.state.ok() && cloud.points[0] == vector3d(1, 2, 3) && cloud.lines[0] == 9);
/// \endcode
///
/// Failure: not_finite for a coordinate that is infinite or NaN, cut_short for fewer vertices than the header
/// announces. Cost: O(size of the file). Throws: std::bad_alloc.
[[nodiscard]] inline space_cloud parse_ply(std::string_view bytes) {
  using namespace detail;
  space_cloud cloud;
  lines in(bytes);
  ply_header h;
  cloud.state = read_ply_header(in, h);
  if (!cloud.state.ok()) return cloud;
  ply_text text(in);
  ply_binary binary(in.rest(), h.kind == ply_kind::big_endian);
  const bool ascii = h.kind == ply_kind::ascii;
  for (const ply_element& e : h.elements) {
    const bool vertices = e.name == "vertex";
    std::size_t place[3] = {};
    if (vertices) cloud.state = find_coordinates(e, place);
    if (!cloud.state.ok()) return cloud;
    const auto take = [&](const std::vector<double>& v, std::size_t i) {
      if (!vertices) return file_state{};
      const vector3d p(v[place[0]], v[place[1]], v[place[2]]);
      if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
        return failure(problem::not_finite, "vertex " + std::to_string(i) + " is not finite", ascii ? text.line() : 0);
      cloud.points.push_back(p);
      if (ascii) cloud.lines.push_back(text.line());
      return file_state{};
    };
    cloud.state = ascii ? text.read(e, take) : binary.read(e, take);
    if (vertices || !cloud.state.ok()) break;
  }
  if (cloud.state.ok() && cloud.points.empty()) cloud.state = failure(problem::no_data, "the file has no vertices");
  return cloud;
}

}  // namespace tessarn::files
