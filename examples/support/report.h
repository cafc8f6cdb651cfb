// The text of a report, and the frame of a program: errors become one line and an exit code.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "csv.h"

namespace example {

// Collects the report, so that it is printed as a whole or not at all.
class report {
 public:
  // A line as printf makes it.
  [[gnu::format(printf, 2, 3)]] void line(const char* format, ...);
  void blank() { text_ += '\n'; }
  void heading(const std::string& words);
  // Title, file, comments and the number of rows.
  void data_source(const table& t);
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// The input was understood, but the computation has no result; printed after the report.
class no_result : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Parses the arguments, runs `job` and prints the report. Exit code 0; 1 for no_result and a
// failing gnuplot; 2 for wrong arguments and input_error, with one line on the error stream.
int run(CLI::App& app, int argc, char** argv, const std::function<void(report&)>& job);

inline constexpr double degrees = 57.295779513082320877;

}  // namespace example
