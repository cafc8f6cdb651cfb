#include "csv.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>
#include <system_error>

namespace example {
namespace {

std::string_view trim(std::string_view s) {
  const auto first = s.find_first_not_of(" \t\r");
  if (first == s.npos) return {};
  return s.substr(first, s.find_last_not_of(" \t\r") - first + 1);
}

std::vector<std::string_view> split(std::string_view line, char separator = ',') {
  std::vector<std::string_view> fields;
  for (;;) {
    const auto end = line.find(separator);
    fields.push_back(trim(line.substr(0, end)));
    if (end == line.npos) return fields;
    line.remove_prefix(end + 1);
  }
}

// The separator that an unreadable line seems to use instead of a comma, as the end of the error message.
std::string other_separator(std::string_view line, std::size_t columns) {
  constexpr struct {
    char separator;
    const char* name;
  } others[] = {{';', "semicolons"}, {'\t', "tabs"}, {' ', "blanks"}};
  for (const auto& other : others) {
    auto fields = split(line, other.separator);
    if (other.separator == ' ')  // several blanks separate as one
      std::erase_if(fields, [](std::string_view field) { return field.empty(); });
    if (fields.size() != columns) continue;
    std::size_t decimal_commas = 0, ends_in_comma = 0;
    for (const auto field : fields) {
      decimal_commas += field.find(',') != field.npos;
      ends_in_comma += !field.empty() && field.back() == ',';
    }
    if (ends_in_comma > 0) continue;  // "1, 2 3" is separated by commas
    return std::string("; the columns seem to be separated by ") + other.name +
           (decimal_commas > 0 ? " and the decimals by commas" : "") + ", but commas must separate the columns" +
           (decimal_commas > 0 ? " and points the decimals" : "");
  }
  return {};
}

enum class parsed { number, not_finite, text };

parsed parse(std::string_view field, double& v) {
  if (field.size() > 1 && field[0] == '+' && field[1] != '-') field.remove_prefix(1);  // from_chars takes no +
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), v);
  if (error == std::errc::invalid_argument || end != field.data() + field.size()) return parsed::text;
  return error == std::errc() && std::isfinite(v) ? parsed::number : parsed::not_finite;
}

// The field for a message of one line: short, and without control characters.
std::string quoted(std::string_view field) {
  std::string s = "'";
  for (const char c : field.substr(0, 40)) s += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
  return s + (field.size() > 40 ? "...'" : "'");
}

[[noreturn]] void fail(const table& t, std::size_t line, const std::string& reason) {
  throw input_error(t.file + ":" + std::to_string(line) + ": " + reason);
}

// The first line is a header when none of its fields is a number.
bool is_header(const std::vector<std::string_view>& fields) {
  double v;
  for (const auto field : fields)
    if (field.empty() || parse(field, v) != parsed::text) return false;
  return true;
}

void add_row(table& t, const std::vector<std::string_view>& fields, std::string_view text, std::size_t line) {
  for (const auto field : fields) {
    double v = 0;
    switch (parse(field, v)) {
      case parsed::number: t.values.push_back(v); break;
      case parsed::not_finite: fail(t, line, quoted(field) + " is not a finite number");
      case parsed::text:
        fail(t, line,
             (field.empty() ? "a field is empty" : quoted(field) + " is not a number") +
                 other_separator(text, t.names.size()));
    }
  }
  t.lines.push_back(line);
}

void check_columns(const table& t, std::size_t found, std::string_view text, std::size_t line) {
  if (found == t.names.size()) return;
  fail(t, line,
       "expected " + std::to_string(t.names.size()) + " columns, found " + std::to_string(found) +
           other_separator(text, t.names.size()));
}

std::ifstream open(const std::string& file) {
  if (std::filesystem::is_directory(file)) throw input_error(file + ": cannot be read: it is a folder");
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  if (!in) throw input_error(file + ": cannot be opened: " + std::strerror(errno));
  return in;
}

}  // namespace

std::string table::name() const { return std::filesystem::path(file).filename().string(); }

std::string table::title() const {
  for (const auto& comment : comments)
    if (comment.rfind("title:", 0) == 0) return std::string(trim(std::string_view(comment).substr(6)));
  return name();
}

bool table::simulated() const {
  for (const auto& comment : comments)
    if (comment.rfind("simulated", 0) == 0) return true;
  return false;
}

table read_csv(const std::string& file, const std::vector<std::string>& default_names) {
  const bool standard_input = file == "-";
  std::ifstream opened;
  if (!standard_input) opened = open(file);
  std::istream& in = standard_input ? std::cin : opened;
  table t;
  t.file = standard_input ? "standard input" : file;
  t.names = default_names;
  bool at_start = true;
  std::string text;
  while (std::getline(in, text)) {
    std::string_view line = text;
    if (++t.last_line == 1 && line.substr(0, 3) == "\xEF\xBB\xBF") line.remove_prefix(3);
    line = trim(line);
    if (line.empty()) continue;
    if (line.front() == '#') {
      t.comments.emplace_back(trim(line.substr(1)));
      continue;
    }
    const auto fields = split(line);
    if (at_start && is_header(fields)) {
      check_columns(t, fields.size(), line, t.last_line);
      t.names.assign(fields.begin(), fields.end());
    } else {
      check_columns(t, fields.size(), line, t.last_line);
      add_row(t, fields, line, t.last_line);
    }
    at_start = false;
  }
  if (in.bad()) fail(t, t.last_line + 1, "cannot be read");
  if (t.rows() == 0) fail(t, t.last_line > 0 ? t.last_line : 1, "the file ends without any numbers");
  return t;
}

void require_rows(const table& t, std::size_t rows, std::size_t least, const std::string& why) {
  if (rows >= least) return;
  fail(t, t.last_line,
       "only " + std::to_string(rows) + (rows == 1 ? " point" : " points") + " up to here, " + why + " needs " +
           std::to_string(least));
}

}  // namespace example
