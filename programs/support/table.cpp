#include "table.h"

#include <tessarn/files.h>

#include <filesystem>
#include <iostream>
#include <iterator>

namespace program {
namespace {

namespace files = tessarn::files;

// One of the words for a separator that a shell makes hard to type, or the character itself.
char separator(const std::string& s) {
  if (s.empty()) return 0;
  if (s == "comma") return ',';
  if (s == "semicolon") return ';';
  if (s == "tab" || s == "\\t") return '\t';
  if (s == "blank") return ' ';
  if (s.size() == 1) return s[0];
  throw input_error("--separator: comma, semicolon, tab, blank or one character");
}

char decimal(const std::string& s) {
  if (s.empty()) return 0;
  if (s == "point" || s == ".") return '.';
  if (s == "comma" || s == ",") return ',';
  throw input_error("--decimal: point or comma");
}

// "a file:3: ..." as the commands say it, with a hint where an option helps.
[[noreturn]] void fail(files::file_state s, const std::string& file) {
  s.file = file;
  std::string words = s.message();
  if (s.what == files::problem::wrong_columns && s.column == 0) words += "; --columns chooses among them";
  throw input_error(words);
}

std::string shown_name(const std::string& file) { return file == "-" ? "standard input" : file; }

files::file_bytes load(const std::string& file) {
  files::file_bytes loaded = file == "-" ? files::load(std::cin) : files::load(std::filesystem::path(file));
  if (!loaded.state.ok()) fail(loaded.state, shown_name(file));
  return loaded;
}

template <class Cloud>
table to_table(const Cloud& cloud, const std::string& file) {
  if (!cloud.state.ok()) fail(cloud.state, file);
  table t;
  t.file = file;
  t.names = {"x", "y", "z"};
  t.lines = cloud.lines;
  if (t.lines.empty()) {
    t.place = "point";
    for (std::size_t i = 1; i <= cloud.points.size(); ++i) t.lines.push_back(i);
  }
  t.last_line = t.lines.back();
  for (const vector3d& p : cloud.points) t.values.insert(t.values.end(), {p.x, p.y, p.z});
  return t;
}

}  // namespace

std::string table::name() const { return std::filesystem::path(file).filename().string(); }

std::string table::title() const {
  for (const auto& comment : comments)
    if (comment.rfind("title:", 0) == 0) {
      const auto begin = comment.find_first_not_of(" \t", 6);
      return begin == comment.npos ? "" : comment.substr(begin);
    }
  return name();
}

bool table::simulated() const {
  for (const auto& comment : comments)
    if (comment.rfind("simulated", 0) == 0) return true;
  return false;
}

table read_table(const std::string& file, const std::vector<std::string>& default_names, const input_options& options) {
  files::csv_options o;
  o.separator = separator(options.separator);
  o.decimal = decimal(options.decimal);
  o.skip_bad_rows = options.skip_bad;
  o.columns = options.columns;
  if (o.columns.empty()) o.width = default_names.size();
  if (!o.columns.empty() && o.columns.size() != default_names.size())
    throw input_error("--columns: " + std::to_string(default_names.size()) + " columns are needed, " +
                      std::to_string(o.columns.size()) + " are named");
  const std::string content = load(file).bytes;
  files::table t = files::parse_csv(content, o);
  if (!t.state.ok()) fail(t.state, shown_name(file));
  table result;
  result.file = shown_name(file);
  result.comments = std::move(t.comments);
  result.names = t.names.empty() ? default_names : std::move(t.names);
  result.values.assign(t.values.begin(), t.values.end());
  result.lines = std::move(t.lines);
  result.last_line = t.last_line;
  result.skipped = t.skipped;
  if (t.skipped > 0) {
    t.reasons[0].file = result.name();
    result.first_skipped = t.reasons[0].message();
  }
  return result;
}

table read_space_table(const std::string& file, const input_options& options) {
  const std::string ending = files::detail::ending(file);
  const bool cloud = ending == ".ply" || ending == ".xyz" || ending == ".npy";
  if (file == "-" || !cloud) return read_table(file, {"x", "y", "z"}, options);
  return to_table(files::read_space_points(file), file);
}

void require_rows(const table& t, std::size_t rows, std::size_t least, const std::string& why) {
  if (rows >= least) return;
  throw input_error(t.file + ":" + std::to_string(t.last_line) + ": only " + std::to_string(rows) +
                    (rows == 1 ? " point" : " points") + " up to here, " + why + " needs " + std::to_string(least));
}

}  // namespace program
