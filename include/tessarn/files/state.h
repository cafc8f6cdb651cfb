/// \file
/// The state of a file that was read or written, and the parts that all formats share: whole files, numbers as text,
/// messages. A part of tessarn/files.h.
#pragma once

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "tessarn/scalar.h"

namespace tessarn::files {

/// The kinds of failure, for programs that act on them; file_state::message() is for people.
enum class problem : int {
  none,            ///< everything was read or written
  cannot_read,     ///< the file cannot be opened or read
  cannot_write,    ///< the file cannot be written as a whole, for example because the disk is full
  wrong_encoding,  ///< the text is not in UTF-8 or ASCII
  wrong_format,    ///< the file breaks the rules of its format
  not_a_number,    ///< a cell holds something else than a number, or nothing
  not_finite,      ///< a number is infinite, not a number, or beyond the range of a real
  wrong_columns,   ///< a row has another number of cells than the file before it, or than was asked for
  unknown_column,  ///< a column that was asked for does not exist
  no_data,         ///< the file ends without any numbers
  cut_short,       ///< the file ends before its announced end
  not_supported,   ///< the file is of a kind that is not read, or holds values that a real cannot hold
  too_large,       ///< the sizes in the file exceed what is allowed
};

/// Whether reading or writing succeeded: the kind of failure, where, and a reason in plain words.
struct file_state {
  problem what = problem::none;
  std::string file;        ///< the name of the file as it was given; empty for text in memory
  std::size_t line = 0;    ///< counted from 1; 0 where the failure belongs to no line
  std::size_t column = 0;  ///< the character of the line, counted from 1; 0 where the failure belongs to no character
  std::string reason;      ///< a few words in one line, empty without a failure

  bool ok() const noexcept { return what == problem::none; }
  /// "points.csv:3:5: 'x' is not a number": one line, with what is known of the place. Empty without a failure.
  std::string message() const {
    if (ok()) return {};
    std::string s = file;
    if (line > 0) s += (s.empty() ? "line " : ":") + std::to_string(line);
    if (line > 0 && column > 0) s += ":" + std::to_string(column);
    return s.empty() ? reason : s + ": " + reason;
  }
};

/// The bytes of a file, or why they could not be read.
struct file_bytes {
  file_state state;
  std::string bytes;
};

namespace detail {

inline file_state failure(problem what, std::string reason, std::size_t line = 0, std::size_t column = 0) {
  return {what, {}, line, column, std::move(reason)};
}

/// The words of the operating system for the last error.
inline std::string system_reason(const char* otherwise) {
  return errno != 0 ? std::generic_category().message(errno) : otherwise;
}

/// A piece of the file for a message of one line: short, and without control characters.
inline std::string in_quotes(std::string_view text) {
  constexpr std::size_t most = 40;
  std::string s = "'";
  std::size_t end = (std::min)(text.size(), most);
  // A character of several bytes is not cut.
  while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  for (const char c : text.substr(0, end)) s += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
  return s + (text.size() > end ? "...'" : "'");
}

/// Text in UTF-16 or UTF-32 has zero bytes or begins with their mark.
inline file_state check_encoding(std::string_view text) {
  const std::string_view mark = text.substr(0, 2);
  if (mark == "\xFF\xFE" || mark == "\xFE\xFF")
    return failure(problem::wrong_encoding, "the text is in UTF-16; save it as UTF-8", 1);
  const auto zero = text.find('\0');
  if (zero == text.npos) return {};
  const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(zero), '\n');
  return failure(problem::wrong_encoding, "a zero byte: the file is no text, or it is in UTF-16; save it as UTF-8",
                 static_cast<std::size_t>(line));
}

/// The text without blanks, tabs and carriage returns at both ends.
inline std::string_view trim(std::string_view s) {
  const auto first = s.find_first_not_of(" \t\r");
  if (first == s.npos) return {};
  return s.substr(first, s.find_last_not_of(" \t\r") - first + 1);
}

enum class parsed { number, not_finite, too_small, text };

/// Reads the whole text as one number, by the rules of every country: the decimal separator is the given character.
inline parsed parse_number(std::string_view text, char decimal, double& value) {
  std::string with_point;
  if (decimal != '.') {
    // A comma at the end is no decimal one: "1, 2" is separated by commas.
    if (text.find('.') != text.npos || (!text.empty() && text.back() == decimal)) return parsed::text;
    with_point = text;
    std::replace(with_point.begin(), with_point.end(), decimal, '.');
    text = with_point;
  }
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);  // from_chars takes no +
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) return parsed::text;
  if (error == std::errc()) return std::isfinite(value) ? parsed::number : parsed::not_finite;
  // Out of range: a negative exponent, or a long row of zeros after the point, tells the two ends apart.
  const auto e = text.find_first_of("eE");
  const bool vanishes =
      e != text.npos ? text.substr(e + 1, 1) == "-" : text.find_first_of("123456789") > text.find('.');
  return vanishes ? parsed::too_small : parsed::not_finite;
}

/// Why the text is no number that can be taken, in words; the kind of failure comes with it.
inline file_state number_failure(parsed p, std::string_view text, std::size_t line, std::size_t column) {
  if (text.empty()) return failure(problem::not_a_number, "a field is empty", line, column);
  switch (p) {
    case parsed::not_finite:
      return failure(problem::not_finite, in_quotes(text) + " is not a finite number", line, column);
    case parsed::too_small:
      return failure(problem::not_finite, in_quotes(text) + " is too small for double precision", line, column);
    default: return failure(problem::not_a_number, in_quotes(text) + " is not a number", line, column);
  }
}

/// Appends the shortest text that reads back as the number.
inline void append_number(std::string& out, real value) {
  char digits[32];
  const auto [end, error] = std::to_chars(digits, digits + sizeof digits, static_cast<double>(value));
  if (value != value) {
    out += "nan";  // without a sign, which means nothing
  } else {
    out.append(digits, end);
  }
  static_cast<void>(error);  // 32 characters hold every double
}

/// The position in a line as people count: characters from 1, where a character may have several bytes.
inline std::size_t character_at(std::string_view line, std::size_t offset) {
  std::size_t n = 1;
  for (std::size_t i = 0; i < offset && i < line.size(); ++i) n += (static_cast<unsigned char>(line[i]) & 0xC0) != 0x80;
  return n;
}

/// Lines of a text, with their numbers. A line ends in LF or CRLF; the last one may end without.
class lines {
 public:
  explicit lines(std::string_view text) : rest_(text) {}
  /// The next line without its end; false after the last one.
  bool next(std::string_view& line) {
    if (rest_.empty()) return false;
    const auto end = rest_.find('\n');
    line = rest_.substr(0, end);
    rest_.remove_prefix(end == rest_.npos ? rest_.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    ++number_;
    return true;
  }
  std::size_t number() const { return number_; }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
  std::size_t number_ = 0;
};

/// The next word of a line, blanks and tabs around it; empty at the end. `column` is where it begins.
inline std::string_view next_word(std::string_view line, std::size_t& offset, std::size_t& column) {
  offset = (std::min)(line.find_first_not_of(" \t\r", offset), line.size());
  column = offset + 1;
  const std::size_t end = (std::min)(line.find_first_of(" \t\r", offset), line.size());
  const std::string_view word = line.substr(offset, end - offset);
  offset = end;
  return word;
}

/// A count without sign and blanks; false for anything else, and for one that does not fit.
inline bool parse_count(std::string_view text, std::size_t& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

/// a b, or false when it does not fit.
inline bool multiply(std::size_t a, std::size_t b, std::size_t& product) {
  if (a != 0 && b > (std::numeric_limits<std::size_t>::max)() / a) return false;
  product = a * b;
  return true;
}

inline std::string lower(std::string_view s) {
  std::string result(s);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

/// The ending of a file name in small letters, with its point.
inline std::string ending(const std::filesystem::path& file) { return lower(file.extension().string()); }

/// The name of a file in the state of a result, after the bytes were taken apart without knowing it.
inline void name_file(file_state& state, const std::filesystem::path& file) {
  if (!state.ok()) state.file = file.string();
}

}  // namespace detail

/// All bytes that a stream still gives, std::cin for example.
/// Failure: cannot_read. Throws: std::bad_alloc. Memory: the bytes and up to as many again while they grow.
inline file_bytes load(std::istream& in) {
  file_bytes result;
  char block[1 << 16];
  do {
    in.read(block, sizeof block);
    result.bytes.append(block, static_cast<std::size_t>(in.gcount()));
  } while (in);
  if (in.bad()) result.state = detail::failure(problem::cannot_read, "cannot be read");
  return result;
}

/// All bytes of a file.
inline file_bytes load(const std::filesystem::path& file) {
  file_bytes result;
  std::error_code ignored;
  errno = 0;
  if (std::filesystem::is_directory(file, ignored)) {
    result.state = detail::failure(problem::cannot_read, "cannot be read: it is a folder");
  } else if (std::ifstream in(file, std::ios::binary); in) {
    result = load(in);
  } else {
    result.state =
        detail::failure(problem::cannot_read, "cannot be opened: " + detail::system_reason("it cannot be found"));
  }
  detail::name_file(result.state, file);
  return result;
}

namespace detail {

/// Gives the bytes of a file to `parse`; where the file cannot be read, the result has the reason alone. A state that
/// is not ok has the name of the file.
template <class Parse>
auto parse_file(const std::filesystem::path& file, Parse&& parse) {
  const file_bytes loaded = load(file);
  decltype(parse(std::string_view())) result;
  result.state = loaded.state;
  if (result.state.ok()) result = parse(std::string_view(loaded.bytes));
  name_file(result.state, file);
  return result;
}

}  // namespace detail

/// Writes a file as a whole; what it held before is lost. After a failure the file may hold a part of the bytes.
[[nodiscard]] inline file_state save(const std::filesystem::path& file, std::string_view bytes) {
  file_state state;
  errno = 0;
  std::ofstream out(file, std::ios::binary);
  if (out) {
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();  // the disk may be found full only now
  }
  if (!out)
    state =
        detail::failure(problem::cannot_write, "cannot be written: " + detail::system_reason("it cannot be opened"));
  detail::name_file(state, file);
  return state;
}

}  // namespace tessarn::files
