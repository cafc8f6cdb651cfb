/// \file
/// Points of the plane and of space from files and into files: CSV, XYZ, PLY, .npy. A part of tessarn/files.h.
#pragma once

#include "tessarn/files/csv.h"
#include "tessarn/files/npy.h"
#include "tessarn/files/ply.h"
#include "tessarn/vector.h"
#include "tessarn/views.h"

namespace tessarn::files {

/// Points of the plane, and where in a file they stand. With a state other than ok() the points are those before the
/// failure.
struct plane_cloud {
  file_state state;
  std::vector<::vector> points;
  std::vector<std::size_t> lines;  ///< the line of each point; empty for .npy files
  std::size_t marked = 0;          ///< points with an x of exactly -1.0, which fits and the point list leave out
};

namespace detail {

/// The columns of a table of points: `count` of them, whether chosen or all that there are.
inline csv_options with_width(csv_options o, std::size_t count, table& refused) {
  if (o.columns.empty()) {
    o.width = count;
  } else if (o.columns.size() != count) {
    refused.state = failure(problem::unknown_column, "these points need " + std::to_string(count) + " columns, " +
                                                         std::to_string(o.columns.size()) + " are chosen");
  }
  return o;
}

/// The rows of an array of n rows and `columns` columns.
inline file_state check_points(const array& a, std::size_t columns) {
  if (!a.state.ok()) return a.state;
  if (a.complex || a.shape.size() != 2 || a.shape[1] != columns)
    return failure(problem::wrong_columns, "the array is not n x " + std::to_string(columns));
  for (std::size_t i = 0; i < a.values.size(); ++i)
    if (!std::isfinite(a.values[i]))
      return failure(problem::not_finite, "row " + std::to_string(i / columns) + " holds a number that is not finite");
  return a.shape[0] > 0 ? file_state{} : failure(problem::no_data, "the array has no rows");
}

inline plane_cloud to_plane_cloud(table&& t) {
  plane_cloud c;
  c.state = std::move(t.state);
  c.lines = std::move(t.lines);
  c.points.reserve(c.lines.size());
  for (std::size_t i = 0; i < c.lines.size(); ++i) {
    c.points.emplace_back(t.values[2 * i], t.values[2 * i + 1]);
    c.marked += t.values[2 * i] == -1;
  }
  return c;
}

inline space_cloud to_space_cloud(table&& t) {
  space_cloud c;
  c.state = std::move(t.state);
  c.lines = std::move(t.lines);
  c.points.reserve(c.lines.size());
  for (std::size_t i = 0; i < c.lines.size(); ++i)
    c.points.emplace_back(t.values[3 * i], t.values[3 * i + 1], t.values[3 * i + 2]);
  return c;
}

}  // namespace detail

/// Points of the plane from a table in memory, by the columns of the options, or from a table of two columns.
[[nodiscard]] inline plane_cloud parse_plane_points(std::string_view text, const csv_options& options = {}) {
  table t;
  const csv_options o = detail::with_width(options, 2, t);
  return detail::to_plane_cloud(t.state.ok() ? parse_csv(text, o) : std::move(t));
}

/// Points of space from a table in memory, by the columns of the options, or from a table of three columns.
[[nodiscard]] inline space_cloud parse_space_points(std::string_view text, const csv_options& options = {}) {
  table t;
  const csv_options o = detail::with_width(options, 3, t);
  return detail::to_space_cloud(t.state.ok() ? parse_csv(text, o) : std::move(t));
}

/// Points of space from an XYZ file in memory: a point a line, its coordinates first; what follows them, as colours or
/// a normal, is passed over, also where rows have different lengths. Lines that begin with # are comments.
/// Failure: as of parse_csv(). The molecular format of this name, which begins with a count, is not read.
[[nodiscard]] inline space_cloud parse_xyz(std::string_view text) {
  space_cloud c;
  c.state = detail::check_encoding(text);
  detail::lines in(text);
  for (std::string_view line; c.state.ok() && in.next(line);) {
    if (in.number() == 1 && line.substr(0, 3) == "\xEF\xBB\xBF") line.remove_prefix(3);
    const std::string_view content = detail::trim(line);
    if (content.empty() || content.front() == '#') continue;
    double v[3] = {};
    std::size_t at = 0, column = 0;
    for (int k = 0; k < 3 && c.state.ok(); ++k) {
      const std::string_view word = detail::next_word(line, at, column);
      const detail::parsed p = detail::parse_number(word, '.', v[k]);
      if (word.empty()) {
        c.state =
            detail::failure(problem::wrong_columns, "expected 3 numbers, found " + std::to_string(k), in.number());
      } else if (p != detail::parsed::number) {
        c.state = detail::number_failure(p, word, in.number(), detail::character_at(line, column - 1));
      }
    }
    if (!c.state.ok()) break;
    c.points.emplace_back(v[0], v[1], v[2]);
    c.lines.push_back(in.number());
  }
  if (c.state.ok() && c.points.empty())
    c.state =
        detail::failure(problem::no_data, "the file ends without any numbers", (std::max)(in.number(), std::size_t{1}));
  return c;
}

namespace detail {

/// Points of the plane from the bytes of a .npy file.
inline plane_cloud plane_points_of_npy(std::string_view bytes) {
  plane_cloud c;
  const array a = parse_npy(bytes);
  c.state = check_points(a, 2);
  for (std::size_t i = 0; c.state.ok() && i + 1 < a.values.size(); i += 2) {
    c.points.emplace_back(a.values[i], a.values[i + 1]);
    c.marked += a.values[i] == -1;
  }
  return c;
}

/// Points of space from the bytes of a .npy file.
inline space_cloud space_points_of_npy(std::string_view bytes) {
  space_cloud c;
  const array a = parse_npy(bytes);
  c.state = check_points(a, 3);
  for (std::size_t i = 0; c.state.ok() && i + 2 < a.values.size(); i += 3)
    c.points.emplace_back(a.values[i], a.values[i + 1], a.values[i + 2]);
  return c;
}

}  // namespace detail

/// Reads points of the plane from a .npy file with an n x 2 array, or from a table (any other ending).
[[nodiscard]] inline plane_cloud read_plane_points(const std::filesystem::path& file, const csv_options& options = {}) {
  return detail::parse_file(file, [&](std::string_view bytes) {
    return detail::ending(file) == ".npy" ? detail::plane_points_of_npy(bytes) : parse_plane_points(bytes, options);
  });
}

/// Reads points of space by the ending of the name: .ply, .xyz, .npy with an n x 3 array, or a table (any other
/// ending), for which alone the options count.
[[nodiscard]] inline space_cloud read_space_points(const std::filesystem::path& file, const csv_options& options = {}) {
  return detail::parse_file(file, [&](std::string_view bytes) {
    const std::string ending = detail::ending(file);
    return ending == ".ply"   ? parse_ply(bytes)
           : ending == ".xyz" ? parse_xyz(bytes)
           : ending == ".npy" ? detail::space_points_of_npy(bytes)
                              : parse_space_points(bytes, options);
  });
}

/// \name Points as the content of a file
/// Every number in text has the fewest digits that read back as the number itself; binary forms hold the 8 bytes of
/// each. Any list of points is taken without a copy.
/// Throws: std::bad_alloc.
/// @{
[[nodiscard]] inline std::string format_csv(const plane_points& p, const csv_format& f = {}) {
  return detail::format_table(p.size(), 2, f, [&p](std::size_t r, std::size_t c) { return c == 0 ? p.x[r] : p.y[r]; });
}
[[nodiscard]] inline std::string format_csv(const space_points& p, const csv_format& f = {}) {
  return detail::format_table(p.size(), 3, f, [&p](std::size_t r, std::size_t c) {
    return c == 0 ? p.x[r] : c == 1 ? p.y[r] : p.z[r];
  });
}
[[nodiscard]] inline std::string format_xyz(const space_points& p) { return format_csv(p, {' '}); }
[[nodiscard]] inline std::string format_npy(const plane_points& p) {
  return detail::format_array(p.size(), 2, false, [&p](std::string& out, std::size_t r, std::size_t c) {
    detail::append_binary(out, static_cast<double>(c == 0 ? p.x[r] : p.y[r]));
  });
}
[[nodiscard]] inline std::string format_npy(const space_points& p) {
  return detail::format_array(p.size(), 3, false, [&p](std::string& out, std::size_t r, std::size_t c) {
    detail::append_binary(out, static_cast<double>(c == 0 ? p.x[r] : c == 1 ? p.y[r] : p.z[r]));
  });
}
/// In text, or in binary with the lowest byte first.
[[nodiscard]] inline std::string format_ply(const space_points& p, bool binary = true) {
  std::string out = std::string("ply\nformat ") + (binary ? "binary_little_endian" : "ascii") +
                    " 1.0\nelement vertex " + std::to_string(p.size()) +
                    "\nproperty double x\nproperty double y\nproperty double z\nend_header\n";
  if (!binary) return out + format_xyz(p);
  for (std::size_t i = 0; i < p.size(); ++i)
    for (const real v : {p.x[i], p.y[i], p.z[i]}) detail::append_binary(out, static_cast<double>(v));
  return out;
}
/// @}

/// Writes points of the plane by the ending of the name: .npy, or CSV with a header (any other ending).
[[nodiscard]] inline file_state write_points(const std::filesystem::path& file, const plane_points& p) {
  if (detail::ending(file) == ".npy") return save(file, format_npy(p));
  return save(file, format_csv(p, {',', '.', {"x", "y"}}));
}

/// Writes points of space by the ending of the name: .ply (binary), .xyz, .npy, or CSV with a header (any other
/// ending).
[[nodiscard]] inline file_state write_points(const std::filesystem::path& file, const space_points& p) {
  const std::string ending = detail::ending(file);
  if (ending == ".ply") return save(file, format_ply(p));
  if (ending == ".xyz") return save(file, format_xyz(p));
  if (ending == ".npy") return save(file, format_npy(p));
  return save(file, format_csv(p, {',', '.', {"x", "y", "z"}}));
}

}  // namespace tessarn::files
