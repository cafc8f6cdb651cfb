// The text of a report, the same findings as JSON, and the frame of a program: errors become one line and an exit code.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "table.h"

#if defined(__MINGW32__)
#define TESSARN_PRINTF gnu_printf  // the C++ library of MinGW-w64 brings a printf of its own, which knows %zu
#else
#define TESSARN_PRINTF printf
#endif

namespace program {

using json = nlohmann::ordered_json;

// Collects the report, so that it is printed as a whole or not at all.
class report {
 public:
  // A line as printf makes it.
  [[gnu::format(TESSARN_PRINTF, 2, 3)]] void line(const char* format, ...);
  void blank() { text_ += '\n'; }
  void heading(const std::string& words);
  // Title, file, comments and the number of rows.
  void data_source(const table& t);
  // Lines that tell which points a picture leaves out; none when it shows every point.
  void thinned(const std::vector<std::string>& lines);
  // A remark for the error stream, where it is seen also when the report goes to a file.
  void note(const std::string& words) { notes_.push_back(words); }
  // Says on a terminal what takes long now; nothing where the error stream is no terminal.
  void phase(const std::string& words);
  const std::string& text() const { return text_; }
  const std::vector<std::string>& notes() const { return notes_; }

  json findings = json::object();  // what --json prints
  bool as_json = false;

 private:
  std::string text_;
  std::vector<std::string> notes_;
};

// The numbers of a vector, for the findings.
template <class Vector>
json coordinates(const Vector& v) {
  if constexpr (requires { v.z; }) {
    return json::array({v.x, v.y, v.z});
  } else {
    return json::array({v.x, v.y});
  }
}

// The input was understood, but the computation has no result; printed after the report.
class no_result : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The number itself. Throws no_result that names it when it is infinite or not a number, which is
// what comes out when the data are too large for double precision.
double finite(double v, const std::string& name);

// Checks of option values, each with a short message for what it refuses.
extern const CLI::Validator finite_number;

// Declares the options that say how files are read, --json and --plot.
struct common_options {
  input_options input;
  std::string plot;
  bool as_json = false;
};
void declare_common(CLI::App& command, common_options& o, const std::string& columns, bool rows_may_be_left_out = true);

// A command of the program: its options, what it does with them, and a paragraph for its manual page.
struct command {
  CLI::App* app;
  std::function<void(report&)> job;
  std::string details = {};
};

// "tessarn (Tessarn 1.0.0)", by the version of the library that the program was compiled with.
std::string version_line(const std::string& program);

inline constexpr const char* exit_codes =
    "Exit codes: 0 the report is printed; 1 there is no result, or it cannot be written; 2 wrong arguments or input.";

// Parses the arguments, runs `job` and prints the report. Exit code 0; 1 for no_result, a failing
// gnuplot and a report that cannot be written; 2 for wrong arguments and input_error, with one line
// on the error stream. Every program gets --help and --version here.
int run(CLI::App& app, int argc, char** argv, const std::function<void(report&)>& job);

inline constexpr double degrees = 57.295779513082320877;

}  // namespace program
