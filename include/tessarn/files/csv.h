/// \file
/// Tables of numbers in text: CSV with any usual separator, and columns between blanks. A part of tessarn/files.h.
#pragma once

#include <algorithm>
#include <list>

#include "tessarn/files/state.h"

namespace tessarn::files {

/// Whether the first row names the columns.
enum class header { recognised, yes, no };

/// How a table is read. The defaults recognise everything.
struct csv_options {
  /// ',', ';', '\t', ' ' for any run of blanks and tabs, or another character; 0: recognised from the first rows.
  char separator = 0;
  /// '.' or ','; 0: recognised from the first rows.
  char decimal = 0;
  /// Lines that begin with it are comments; 0: there are none.
  char comment = '#';
  /// The first row is a header when it holds a word and no number.
  files::header header = files::header::recognised;
  /// The columns to take, in this order: names of the header, with or without a unit in parentheses, or numbers from 1.
  /// None: all columns.
  std::vector<std::string> columns;
  /// The number of cells that every row must have; 0: as many as the first row.
  std::size_t width = 0;
  /// Rows that cannot be read are left out and counted; otherwise the first one ends the reading.
  bool skip_bad_rows = false;
  /// Infinities and NaN are numbers, and an empty cell is a NaN; otherwise they make a row bad.
  bool keep_not_finite = false;
};

/// A table of numbers. With a state other than ok() the fields hold what was read before the failure.
struct table {
  file_state state;
  std::vector<std::string> comments;  ///< the comment lines, without their mark and the blanks around
  std::vector<std::string> names;     ///< the names of the columns taken; empty without a header
  std::vector<real> values;           ///< row by row
  std::vector<std::size_t> lines;     ///< the line of the file in which each row begins
  std::size_t columns = 0;            ///< the number of columns taken
  std::size_t last_line = 0;          ///< the number of lines of the file, as far as it was read
  std::size_t skipped = 0;            ///< the number of rows left out by skip_bad_rows
  std::vector<file_state> reasons;    ///< why the first 20 of these were left out
  char separator = ',';               ///< as given or recognised
  char decimal = '.';                 ///< as given or recognised

  std::size_t rows() const noexcept { return lines.size(); }
  real at(std::size_t row, std::size_t column) const noexcept { return values[row * columns + column]; }
};

namespace detail {

struct cell {
  std::string_view text;  // without quotes and the blanks around
  std::size_t line = 0;
  std::size_t line_start = 0, start = 0;  // in the whole text
};

/// Takes a text apart into rows of cells. A cell in double quotes may hold separators, line ends and doubled quotes.
class row_reader {
 public:
  row_reader(std::string_view text, char separator, char comment) : text_(text), separator_(separator), mark_(comment) {
    if (text_.substr(0, 3) == "\xEF\xBB\xBF") at_ = 3;
    line_start_ = at_;
  }

  /// The next row with something in it; false at the end of the text or at a quote that breaks the rules, which
  /// error() tells. Comments go to `comments`, which may be null.
  bool next(std::vector<cell>& cells, std::vector<std::string>* comments) {
    unescaped_.clear();
    while (at_ < text_.size()) {
      ++line_;
      line_start_ = at_;
      const std::string_view line = trim(text_.substr(at_, end_of_line() - at_));
      if (!line.empty() && (mark_ == 0 || line.front() != mark_)) {
        read_row(cells);
        return error_.ok();
      }
      if (!line.empty() && comments) comments->emplace_back(trim(line.substr(1)));
      at_ = (std::min)(end_of_line() + 1, text_.size());
    }
    return false;
  }

  /// The character of its line at which a cell begins.
  std::size_t column(const cell& c) const { return character_at(text_.substr(c.line_start), c.start - c.line_start); }
  std::size_t line() const { return line_; }
  const file_state& error() const { return error_; }

 private:
  std::size_t end_of_line() const { return (std::min)(text_.find('\n', at_), text_.size()); }
  bool is_blank(char c) const { return c == ' ' || c == '\r' || (c == '\t' && separator_ != '\t'); }
  bool is_separator(char c) const { return separator_ == ' ' ? is_blank(c) : c == separator_; }
  void skip_blanks() {
    while (at_ < text_.size() && is_blank(text_[at_])) ++at_;
  }

  void read_row(std::vector<cell>& cells) {
    cells.clear();
    for (;;) {
      skip_blanks();
      if (separator_ == ' ' && (at_ == text_.size() || text_[at_] == '\n')) break;  // blanks at the end of a line
      cells.push_back(at_ < text_.size() && text_[at_] == '"' ? read_quoted() : read_plain());
      if (!error_.ok()) return;
      if (at_ == text_.size() || text_[at_] == '\n') break;
      ++at_;  // the separator
    }
    if (at_ < text_.size()) ++at_;  // the line end
  }

  cell read_plain() {
    const std::size_t start = at_;
    while (at_ < text_.size() && text_[at_] != '\n' && !is_separator(text_[at_])) ++at_;
    return {trim(text_.substr(start, at_ - start)), line_, line_start_, start};
  }

  cell read_quoted() {
    cell c{{}, line_, line_start_, at_};
    const std::size_t start = ++at_;
    bool doubled = false;
    for (;; ++at_) {
      if (at_ == text_.size()) {
        error_ = failure(problem::wrong_format, "the quote that begins here does not end", c.line, column(c));
        return c;
      }
      if (text_[at_] == '"') {
        if (text_.substr(at_ + 1, 1) != "\"") break;
        doubled = true;
        ++at_;
      } else if (text_[at_] == '\n') {
        ++line_;
        line_start_ = at_ + 1;
      }
    }
    c.text = trim(text_.substr(start, at_ - start));
    if (doubled) c.text = unescape(c.text);
    ++at_;
    skip_blanks();
    if (separator_ == ' ' && is_blank(text_[at_ - 1])) --at_;  // the blanks after a quote separate, too
    if (at_ < text_.size() && text_[at_] != '\n' && !is_separator(text_[at_]))
      error_ = failure(problem::wrong_format, "text stands between a closing quote and the separator", line_,
                       column({{}, line_, line_start_, at_}));
    return c;
  }

  std::string_view unescape(std::string_view s) {
    std::string& plain = unescaped_.emplace_back();
    for (std::size_t i = 0; i < s.size(); ++i) {
      plain += s[i];
      if (s[i] == '"') ++i;
    }
    return plain;
  }

  std::string_view text_;
  char separator_, mark_;
  std::size_t at_ = 0, line_ = 0, line_start_ = 0;
  std::list<std::string> unescaped_;  // what the views of one row need besides the text
  file_state error_;
};

/// How well the first rows read with a separator and a decimal mark: numbers less words, in rows of the usual width. A
/// first row of words alone counts nothing, since they may be names.
struct reading {
  long long score = 0;
  std::size_t width = 0;  // the usual one
};
inline reading rate(std::string_view text, char separator, char decimal, char comment) {
  constexpr int most_rows = 50;
  row_reader reader(text, separator, comment);
  std::vector<cell> cells;
  std::vector<std::pair<std::size_t, long long>> rows;  // width, numbers less words
  for (int i = 0; i < most_rows && reader.next(cells, nullptr); ++i) {
    long long numbers = 0, words = 0;
    for (const cell& c : cells) {
      double v = 0;
      if (!c.text.empty()) ++(parse_number(c.text, decimal, v) == parsed::text ? words : numbers);
    }
    rows.emplace_back(cells.size(), i == 0 && numbers == 0 ? 0 : numbers - words);
  }
  reading best;
  for (const auto& usual : rows) {
    long long sum = 0;
    for (const auto& row : rows)
      if (row.first == usual.first) sum += row.second;
    if (sum > best.score) best = {sum, usual.first};
  }
  return best;
}

/// The separator and the decimal mark of a table where the options leave them open: the pair that makes the most
/// numbers of the first rows, and of equals the first.
inline void recognise(std::string_view text, const csv_options& o, table& t) {
  constexpr char pairs[][2] = {{',', '.'}, {';', '.'}, {';', ','}, {'\t', '.'}, {'\t', ','},
                               {' ', '.'}, {' ', ','}, {'|', '.'}, {',', ','}};
  t.separator = o.separator != 0 ? o.separator : o.decimal == ',' ? ';' : ',';
  t.decimal = o.decimal != 0 ? o.decimal : '.';
  if (o.separator != 0 && o.decimal != 0) return;
  long long best = 0;
  const auto consider = [&](char separator, char decimal) {
    const long long score = rate(text, separator, decimal, o.comment).score;
    if (score <= best) return;
    best = score;
    t.separator = separator;
    t.decimal = decimal;
  };
  if (o.separator != 0) {
    consider(o.separator, '.');
    consider(o.separator, ',');
    return;
  }
  const bool quotes = text.find('"') != text.npos;
  for (const auto& pair : pairs)
    if ((o.decimal == 0 || o.decimal == pair[1]) && (quotes || pair[0] != pair[1])) consider(pair[0], pair[1]);
}

inline bool is_header(const std::vector<cell>& cells, char decimal) {
  bool word = false;
  for (const cell& c : cells) {
    double v = 0;
    if (!c.text.empty() && parse_number(c.text, decimal, v) != parsed::text) return false;
    word = word || !c.text.empty();
  }
  return word;
}

/// "time (s)" without its unit.
inline std::string_view without_unit(std::string_view name) { return trim(name.substr(0, name.find('('))); }

/// The place of a column by its name, its name without the unit, or its number; an empty reason when it was found.
inline std::string find_column(const std::string& wanted, const std::vector<std::string>& names, std::size_t width,
                               std::size_t& place) {
  const auto matches = [&](bool whole) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < names.size(); ++i)
      if ((whole ? std::string_view(names[i]) : without_unit(names[i])) == wanted) found.push_back(i);
    return found;
  };
  auto found = matches(true);
  if (found.empty()) found = matches(false);
  if (found.size() > 1) return "several columns are named " + in_quotes(wanted) + "; give the number of one";
  if (found.size() == 1) {
    place = found[0];
    return {};
  }
  std::size_t number = 0;
  if (parse_count(wanted, number)) {
    place = number - 1;
    if (number >= 1 && number <= width) return {};
    return "there is no column " + in_quotes(wanted) + " among " + std::to_string(width);
  }
  std::string known;
  for (const std::string& name : names) known += (known.empty() ? "; the columns are " : ", ") + in_quotes(name);
  return "no column is named " + in_quotes(wanted) + (known.empty() ? "; the file has no header" : known);
}

/// Reads the rows of one text into a table whose separator and decimal mark are known.
class table_reader {
 public:
  table_reader(std::string_view text, const csv_options& o, table& t)
      : reader_(text, t.separator, o.comment), o_(o), t_(t), width_(o.width) {
    // Where bad rows are left out, those in front of the usual ones are no header.
    if (width_ == 0 && o.skip_bad_rows) width_ = rate(text, t.separator, t.decimal, o.comment).width;
  }

  void read() {
    bool begun = false;
    while (reader_.next(cells_, &t_.comments)) {
      if (!begun && !(o_.skip_bad_rows && width_ != 0 && cells_.size() != width_)) {
        begun = true;
        if (!begin()) break;
        if (header_) continue;
      }
      const std::size_t values = t_.values.size();
      const file_state bad = add_row();
      if (bad.ok()) continue;
      t_.values.resize(values);
      if (!o_.skip_bad_rows) {
        t_.state = bad;
        break;
      }
      if (t_.skipped++ < 20) t_.reasons.push_back(bad);
    }
    t_.last_line = reader_.line();
    if (t_.state.ok()) t_.state = reader_.error();
    if (t_.state.ok() && t_.rows() == 0)
      t_.state =
          failure(problem::no_data, "the file ends without any numbers", (std::max)(t_.last_line, std::size_t{1}));
  }

 private:
  // The first row decides about names, width and columns.
  bool begin() {
    header_ = o_.header == header::yes || (o_.header == header::recognised && is_header(cells_, t_.decimal));
    if (width_ == 0) width_ = cells_.size();
    if (header_) {
      if (!check_width()) return false;
      for (const cell& c : cells_) t_.names.emplace_back(c.text);
    }
    for (const std::string& wanted : o_.columns) {
      std::size_t place = 0;
      const std::string reason = find_column(wanted, t_.names, width_, place);
      if (!reason.empty()) {
        t_.state = failure(problem::unknown_column, reason, cells_[0].line);
        return false;
      }
      places_.push_back(place);
    }
    for (std::size_t i = 0; o_.columns.empty() && i < width_; ++i) places_.push_back(i);
    t_.columns = places_.size();
    std::vector<std::string> names;
    for (const std::size_t place : places_)
      if (header_) names.push_back(t_.names[place]);
    t_.names = std::move(names);
    return true;
  }

  file_state wrong_width() const {
    return failure(problem::wrong_columns,
                   "expected " + std::to_string(width_) + (width_ == 1 ? " column" : " columns") + ", found " +
                       std::to_string(cells_.size()),
                   cells_.empty() ? reader_.line() : cells_[0].line);
  }
  bool check_width() {
    if (cells_.size() != width_) t_.state = wrong_width();
    return t_.state.ok();
  }

  file_state add_row() {
    if (cells_.size() != width_) return wrong_width();
    for (const std::size_t place : places_) {
      const cell& c = cells_[place];
      double v = 0;
      const parsed p = parse_number(c.text, t_.decimal, v);
      const bool kept = o_.keep_not_finite && (c.text.empty() || p == parsed::not_finite);
      if (kept && (c.text.empty() || std::isnan(v))) {
        v = std::numeric_limits<double>::quiet_NaN();
      } else if (kept && std::isfinite(v)) {  // beyond the range
        v = c.text.front() == '-' ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
      } else if (!kept && p != parsed::number) {
        return number_failure(p, c.text, c.line, reader_.column(c));
      }
      t_.values.push_back(static_cast<real>(v));
    }
    t_.lines.push_back(cells_[0].line);
    return {};
  }

  row_reader reader_;
  const csv_options& o_;
  table& t_;
  std::size_t width_;  // 0 before the first row, unless it is given
  bool header_ = false;
  std::vector<std::size_t> places_;
  std::vector<cell> cells_;
};

}  // namespace detail

/// Reads a table from text in memory.
///
/// \code
/// const auto t = tessarn::files::parse_csv("time (s);way (mm)\n0,5;1,25\n1,5;2\n");
/// assert(t.state.ok() && t.rows() == 2 && t.names[1] == "way (mm)");
/// assert(t.separator == ';' && t.decimal == ',' && t.at(0, 0) == 0.5);
/// const auto bad = tessarn::files::parse_csv("1,2\n3,four\n");
/// assert(bad.state.message() == "line 2:3: 'four' is not a number");
/// \endcode
///
/// Cost: O(size of the text). Memory: 8 bytes a cell and 8 a row.
/// Throws: std::bad_alloc.
[[nodiscard]] inline table parse_csv(std::string_view text, const csv_options& o = {}) {
  table t;
  t.state = detail::check_encoding(text);
  if (!t.state.ok()) return t;
  detail::recognise(text, o, t);
  detail::table_reader(text, o, t).read();
  return t;
}

/// Reads a table from a file, which is held in memory as a whole meanwhile.
[[nodiscard]] inline table read_csv(const std::filesystem::path& file, const csv_options& o = {}) {
  table t = detail::parse_file(file, [&](std::string_view bytes) { return parse_csv(bytes, o); });
  for (file_state& reason : t.reasons) detail::name_file(reason, file);
  return t;
}

/// How a table is written.
struct csv_format {
  char separator = ',';
  char decimal = '.';                ///< where it is the separator, too, numbers stand in quotes
  std::vector<std::string> names{};  ///< the header; none is written without names
};

namespace detail {

inline void append_cell(std::string& out, std::string_view name, const csv_format& f) {
  if (name.find_first_of("\"\n\r#") == name.npos && name.find(f.separator) == name.npos) {
    out += name;
    return;
  }
  out += '"';
  for (const char c : name) out += c == '"' ? "\"\"" : std::string(1, c);
  out += '"';
}

inline void append_number(std::string& out, real value, const csv_format& f) {
  const std::size_t start = out.size();
  append_number(out, value);
  const auto point = out.find('.', start);
  if (f.decimal == '.' || point == out.npos) return;
  out[point] = f.decimal;
  if (f.decimal == f.separator) {
    out.insert(start, 1, '"');
    out += '"';
  }
}

/// `value(row, column)` gives the numbers.
template <class Value>
std::string format_table(std::size_t rows, std::size_t columns, const csv_format& f, const Value& value) {
  std::string out;
  for (std::size_t c = 0; c < f.names.size(); ++c) {
    if (c > 0) out += f.separator;
    append_cell(out, f.names[c], f);
  }
  if (!f.names.empty()) out += '\n';
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t c = 0; c < columns; ++c) {
      if (c > 0) out += f.separator;
      append_number(out, value(r, c), f);
    }
    out += '\n';
  }
  return out;
}

}  // namespace detail
}  // namespace tessarn::files
