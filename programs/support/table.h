// Measured points as the commands read them: by tessarn/files.h, with one line for everything that is wrong.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace program {

// Wrong input, told in one line: the file, the line and the reason.
class input_error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// How the commands are told to read their files.
struct input_options {
  std::string separator;             // empty: recognised
  std::string decimal;               // empty: recognised
  std::vector<std::string> columns;  // empty: as many columns as the command needs, and no other
  bool skip_bad = false;
};

struct table {
  std::string file;
  std::vector<std::string> comments;  // without the # and the blanks around
  std::vector<std::string> names;     // of the columns: the header, or the default names
  std::vector<double> values;         // row by row
  std::vector<std::size_t> lines;     // the line of each row; in files without lines its number
  std::size_t last_line = 0;
  std::size_t skipped = 0;     // rows that could not be read
  std::string first_skipped;   // why the first one could not
  const char* place = "line";  // what `lines` counts

  std::size_t rows() const { return lines.size(); }
  double at(std::size_t row, std::size_t column) const { return values[row * names.size() + column]; }
  // The file name without its folders.
  std::string name() const;
  // The comment `title: ...`, or the name of the file.
  std::string title() const;
  // True when a comment starts with the word "simulated".
  bool simulated() const;
};

// Throws input_error for a file that cannot be read, a row without the right number of finite
// numbers, and a file without rows. The name - is standard input.
table read_table(const std::string& file, const std::vector<std::string>& default_names, const input_options& options);

// As read_table() with three columns, and the points of .ply, .xyz and .npy files.
table read_space_table(const std::string& file, const input_options& options);

// Throws input_error unless there are at least `least` rows; `why` completes "a plane needs".
void require_rows(const table& t, std::size_t rows, std::size_t least, const std::string& why);

}  // namespace program
