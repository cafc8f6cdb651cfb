#include "report.h"

#include <cstdarg>
#include <cstdio>
#include <filesystem>

namespace example {
namespace {

// The number of characters of a UTF-8 string.
std::size_t width(const std::string& s) {
  std::size_t n = 0;
  for (const char c : s) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return n;
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

void report::heading(const std::string& words) {
  text_ += '\n' + words + '\n' + std::string(width(words), '-') + '\n';
}

void report::data_source(const table& t) {
  text_ += t.title() + '\n' + std::string(width(t.title()), '=') + '\n';
  line("%s, %zu points", t.name().c_str(), t.rows());
  for (const auto& comment : t.comments)
    if (comment.rfind("title:", 0) != 0) line("  %s", comment.c_str());
}

int run(CLI::App& app, int argc, char** argv, const std::function<void(report&)>& job) {
  const std::string program = std::filesystem::path(argv[0]).filename().string();
  report r;
  try {
    app.parse(argc, argv);
    job(r);
  } catch (const CLI::Success& e) {  // --help
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    std::fprintf(stderr, "%s: %s\n", program.c_str(), e.what());
    return 2;
  } catch (const input_error& e) {
    std::fprintf(stderr, "%s: %s\n", program.c_str(), e.what());
    return 2;
  } catch (const no_result& e) {
    std::fputs(r.text().c_str(), stdout);
    std::fflush(stdout);
    std::fprintf(stderr, "%s: %s\n", program.c_str(), e.what());
    return 1;
  }
  std::fputs(r.text().c_str(), stdout);
  return std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace example
