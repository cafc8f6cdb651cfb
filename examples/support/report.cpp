#include "report.h"

#include <tessarn/version.h>

#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>

namespace example {
namespace {

// The number of characters of a UTF-8 string.
std::size_t width(const std::string& s) {
  std::size_t n = 0;
  for (const char c : s) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return n;
}

std::string version() {
  return "Tessarn " + std::to_string(TESSARN_VERSION_MAJOR) + '.' + std::to_string(TESSARN_VERSION_MINOR) + '.' +
         std::to_string(TESSARN_VERSION_PATCH);
}

// One line on the error stream, whatever the words are.
void complain(const std::string& program, std::string words) {
  for (char& c : words)
    if (c == '\n') c = ' ';
  std::fprintf(stderr, "%s: %s\n", program.c_str(), words.c_str());
}

// False, with a message, when not everything could be written.
bool write(const std::string& program, const std::string& s) {
  errno = 0;
  if (std::fputs(s.c_str(), stdout) >= 0 && std::fflush(stdout) == 0) return true;
  complain(program, std::string("the report cannot be written: ") + std::strerror(errno));
  return false;
}

}  // namespace

void report::line(const char* format, ...) {
  std::va_list arguments, again;
  va_start(arguments, format);
  va_copy(again, arguments);
  const int size = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string s(static_cast<std::size_t>(size), '\0');
  std::vsnprintf(s.data(), s.size() + 1, format, again);
  va_end(again);
  text_ += s + '\n';
}

void report::heading(const std::string& words) { text_ += '\n' + words + '\n' + std::string(width(words), '-') + '\n'; }

void report::data_source(const table& t) {
  text_ += t.title() + '\n' + std::string(width(t.title()), '=') + '\n';
  line("%s, %zu points", t.name().c_str(), t.rows());
  for (const auto& comment : t.comments)
    if (comment.rfind("title:", 0) != 0) line("  %s", comment.c_str());
}

double finite(double v, const std::string& name) {
  if (!std::isfinite(v)) throw no_result(name + " is not finite: the numbers are too large for double precision");
  return v;
}

const CLI::Validator finite_number(
    [](std::string& s) -> std::string {
      double v;
      if (CLI::detail::lexical_cast(s, v) && std::isfinite(v)) return {};
      return "'" + s + "' is not a finite number";
    },
    "");

void report::thinned(const std::vector<std::string>& lines) {
  if (lines.empty()) return;
  heading("Picture");
  for (const std::string& words : lines) line("%s", words.c_str());
}

int run(CLI::App& app, int argc, char** argv, const std::function<void(report&)>& job) {
  const std::string program = std::filesystem::path(argv[0]).filename().string();
  app.set_version_flag("--version", program + " (" + version() + ")");
  report r;
  int code = 0;
  std::string reason;
  try {
    app.parse(argc, argv);
    job(r);
  } catch (const CLI::Success& e) {  // --help, --version
    std::ostringstream words;
    app.exit(e, words, words);
    return write(program, words.str()) ? 0 : 1;
  } catch (const CLI::ParseError& e) {
    complain(program, e.what());
    return 2;
  } catch (const input_error& e) {
    complain(program, e.what());
    return 2;
  } catch (const no_result& e) {
    code = 1;
    reason = e.what();
  }
  if (!write(program, r.text())) code = 1;
  for (const std::string& words : r.notes()) complain(program, "note: " + words);
  if (!reason.empty()) complain(program, reason);
  return code;
}

}  // namespace example
