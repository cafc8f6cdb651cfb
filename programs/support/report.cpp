#include "report.h"

#include <tessarn/version.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>
#include <sstream>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace program {
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

#if defined(_WIN32)
constexpr DWORD escape_sequences = 0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING, which older headers lack

// Consoles show UTF-8 and obey escape sequences; files and pipes get the bytes that every system gets.
bool on_terminal() {
  DWORD mode = 0;
  const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
  return GetConsoleMode(console, &mode) && SetConsoleMode(console, mode | escape_sequences);
}

void prepare_streams() {
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
}
#else
bool on_terminal() { return isatty(2) != 0; }

void prepare_streams() {}
#endif

// Takes the line of a phase away again.
void end_phase() {
  if (on_terminal()) std::fputs("\r\033[K", stderr);
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

void report::phase(const std::string& words) {
  if (on_terminal()) std::fprintf(stderr, "\r\033[K%s ...", words.c_str());
}

void report::heading(const std::string& words) { text_ += '\n' + words + '\n' + std::string(width(words), '-') + '\n'; }

void report::data_source(const table& t) {
  text_ += t.title() + '\n' + std::string(width(t.title()), '=') + '\n';
  line("%s, %zu points", t.name().c_str(), t.rows());
  for (const auto& comment : t.comments)
    if (comment.rfind("title:", 0) != 0) line("  %s", comment.c_str());
  if (t.skipped > 0)
    note(std::to_string(t.skipped) + (t.skipped == 1 ? " row" : " rows") +
         " left out that could not be read, the first: " + t.first_skipped);
  findings["files"].push_back({{"name", t.name()},
                               {"title", t.title()},
                               {"simulated", t.simulated()},
                               {"columns", t.names},
                               {"points", t.rows()},
                               {"rows_left_out", t.skipped}});
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

void declare_common(CLI::App& command, common_options& o, const std::string& columns, bool rows_may_be_left_out) {
  command.add_option("--columns", o.input.columns, "the columns " + columns + ", by name or number, for example 1,3")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("LIST");
  command
      .add_option("--separator", o.input.separator, "comma, semicolon, tab, blank or a character (default: recognised)")
      ->type_name("NAME");
  command.add_option("--decimal", o.input.decimal, "point or comma (default: recognised)")->type_name("NAME");
  if (rows_may_be_left_out)
    command.add_flag("--skip-bad", o.input.skip_bad, "leave rows out that cannot be read, with a note");
  command.add_flag("--json", o.as_json, "print the findings as JSON");
  command.add_option("--plot", o.plot, "picture to draw, .svg, .png or .pdf; takes an installed gnuplot")
      ->type_name("FILE");
}

std::string version_line(const std::string& program) { return program + " (" + version() + ")"; }

namespace {

// The text of the report, or as JSON its findings, its notes, and the reason where the work ended early.
std::string printed(const report& r, const std::string& reason) {
  if (!r.as_json) return r.text();
  json all = r.findings;
  if (!r.notes().empty()) all["notes"] = r.notes();
  if (!reason.empty()) all["error"] = reason;
  return all.dump(2, ' ', false, json::error_handler_t::replace) + '\n';
}

}  // namespace

int run(CLI::App& app, int argc, char** argv, const std::function<void(report&)>& job) {
  prepare_streams();
  std::string program = std::filesystem::path(argv[0]).filename().string();
  if (const auto end = program.size() - std::min<std::size_t>(program.size(), 4); program.substr(end) == ".exe")
    program.resize(end);
  app.set_version_flag("--version", version_line(program));
  report r;
  int code = 0;
  std::string reason;
  const auto with_command = [&] {
    const auto commands = app.get_subcommands();
    return commands.empty() ? program : program + ' ' + commands[0]->get_name();
  };
  try {
    app.parse(argc, argv);
    program = with_command();
    job(r);
    end_phase();
  } catch (const CLI::Success& e) {  // --help, --version
    std::ostringstream words;
    app.exit(e, words, words);
    return write(program, words.str()) ? 0 : 1;
  } catch (const CLI::ParseError& e) {
    complain(with_command(), e.what());
    return 2;
  } catch (const input_error& e) {
    end_phase();
    complain(program, e.what());
    return 2;
  } catch (const no_result& e) {
    end_phase();
    code = 1;
    reason = e.what();
  } catch (const std::bad_alloc&) {
    end_phase();
    complain(program, "there is not enough memory for these points");
    return 1;
  }
  if (!write(program, printed(r, reason))) code = 1;
  for (const std::string& words : r.notes()) complain(program, "note: " + words);
  if (!reason.empty()) complain(program, reason);
  return code;
}

}  // namespace program
