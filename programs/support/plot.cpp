#include "plot.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "report.h"

namespace program {
namespace {

std::string terminal(const std::string& file, int width, int height) {
  const std::string size = " size " + std::to_string(width) + "," + std::to_string(height);
  const auto suffix = std::filesystem::path(file).extension();
  // The scales make text as large in all of them.
  if (suffix == ".svg") return "svg noenhanced font 'DejaVu Sans,11' fontscale 1.33 background 'white'" + size;
  if (suffix == ".png") return "pngcairo noenhanced font 'DejaVu Sans,11' background 'white'" + size;
  // A sheet of the size that the other pictures have on a screen.
  if (suffix == ".pdf")
    return "pdfcairo noenhanced font 'DejaVu Sans,11' fontscale 0.75 linewidth 1.5 background 'white' size " +
           text(width / 96.0) + "in," + text(height / 96.0) + "in";
  throw input_error(file + ": the name of a picture must end in .svg, .png or .pdf");
}

// The sizes that make the marks of a terminal as large as those of the .png one.
double mark_scale(const std::string& file) {
  const auto suffix = std::filesystem::path(file).extension();
  return suffix == ".png" ? 1 : 0.85;
}

// The command with every size of marks, "ps 1.5", times the scale.
std::string scaled(const std::string& command, double scale) {
  std::string out;
  std::size_t at = 0;
  for (std::size_t found; scale != 1 && (found = command.find(" ps ", at)) != command.npos;) {
    const char* number = command.c_str() + found + 4;
    char* end = nullptr;
    const double size = std::strtod(number, &end);
    out += command.substr(at, found + 4 - at) + text(size * scale, 3);
    at = static_cast<std::size_t>(end - command.c_str());
  }
  return out + command.substr(at);
}

// True when the file ends as a picture does: gnuplot does not notice that a disk is full.
bool is_complete(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(in), {}};
  const std::string end = content.substr(content.size() - std::min<std::size_t>(content.size(), 32));
  return end.find("</svg>") != end.npos || end.find("IEND") != end.npos || end.find("%%EOF") != end.npos;
}

}  // namespace

plot::plot(const std::string& file, int width, int height) : file_(file), part_(file + ".part") {
  script_ = "set encoding utf8\nset terminal " + terminal(file, width, height) + "\nset output " + quote(part_) +
            "\nset border lc rgb '#404040'\nset grid lc rgb '#d8d8d8' lt 1\nset format '%.7g'\n";
  if (std::filesystem::is_directory(file)) throw input_error(file + ": cannot be written: it is a folder");
  errno = 0;
  if (!std::ofstream(part_)) throw input_error(file + ": cannot be written: " + std::strerror(errno));
}

plot::~plot() {
  std::error_code ignored;
  std::filesystem::remove(part_, ignored);
}

void plot::command(const std::string& line) { script_ += scaled(line, mark_scale(file_)) + '\n'; }

void plot::data(const std::string& name, const std::vector<std::vector<double>>& rows) {
  script_ += "$" + name + " << EOD\n";
  for (const auto& row : rows) {
    for (const double v : row) script_ += text(v, 15) + ' ';
    script_ += '\n';
  }
  script_ += "EOD\n";
}

void plot::draw() {
  script_ += "unset output\n";
#if defined(_WIN32)
  std::FILE* pipe = _popen("gnuplot --default-settings", "wb");
#else
  std::signal(SIGPIPE, SIG_IGN);  // a gnuplot that ends early is seen by its exit code
  std::FILE* pipe = popen("gnuplot --default-settings", "w");
#endif
  if (!pipe) throw no_result("gnuplot cannot be started");
  std::fputs(script_.c_str(), pipe);
#if defined(_WIN32)
  const int code = _pclose(pipe);
#else
  const int code = pclose(pipe);
#endif
  if (code != 0) throw no_result("gnuplot failed or is not installed, there is no picture " + file_);
  std::error_code error;
  if (std::filesystem::file_size(part_, error) == 0 || error) throw no_result("gnuplot wrote no picture " + file_);
  if (!is_complete(part_)) throw no_result(file_ + " cannot be written as a whole; perhaps the disk is full");
  std::filesystem::rename(part_, file_, error);
  if (error) throw input_error(file_ + ": cannot be written: " + error.message());
}

std::string text(double v, int digits) {
  char s[40];
  std::snprintf(s, sizeof s, "%.*g", digits, v);
  return s;
}

std::string quote(const std::string& s) {
  std::string q = "'";
  for (const char c : s) {
    if (c == '\'') q += '\'';
    q += c == '\n' ? ' ' : c;
  }
  return q + "'";
}

std::string with_unit_of(const std::string& name, const std::string& what) {
  const auto unit = name.find('(');
  return unit == name.npos ? what : what + ' ' + name.substr(unit);
}

double tick_step(double extent, double count) {
  if (!(extent > 0)) return 1;
  const double power = std::pow(10.0, std::floor(std::log10(extent / count)));
  const double share = extent / count / power;
  return power * (share < 1.5 ? 1 : share < 3.5 ? 2 : share < 7.5 ? 5 : 10);
}

std::string padded_range(double lo, double hi, double share) {
  const double pad = hi > lo ? share * (hi - lo) : hi != 0 ? 0.1 * std::fabs(hi) : 1.0;
  return "[" + text(lo - pad, 15) + ":" + text(hi + pad, 15) + "]";
}

}  // namespace program
