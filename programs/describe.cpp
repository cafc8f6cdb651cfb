// Writes the manual pages and the completion files of the program from its own declarations, so that they have exactly
// the options that it takes: describe FOLDER. Runs while the program is built and is not installed.

#include <tessarn/version.h>

#include <cstdio>
#include <fstream>
#include <iostream>

#include "commands.h"

namespace {

using CLI::App;

std::string version() {
  return std::to_string(TESSARN_VERSION_MAJOR) + '.' + std::to_string(TESSARN_VERSION_MINOR) + '.' +
         std::to_string(TESSARN_VERSION_PATCH);
}

// Text for troff: no line may begin with a point or an apostrophe, and a minus is written \-.
std::string troff(const std::string& text) {
  std::string out = !text.empty() && (text[0] == '.' || text[0] == '\'') ? "\\&" : "";
  for (const char c : text) out += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
  return out;
}

// The word for the value of an option, without the range that is checked.
std::string value_name(const CLI::Option& o) {
  const std::string name = o.get_type_name();
  return name.substr(0, name.find(':'));
}

bool is_flag(const CLI::Option& o) { return o.get_items_expected_max() == 0; }

// "-m", "--coefficients": as they are typed.
std::vector<std::string> spellings(const CLI::Option& o) {
  std::vector<std::string> all;
  for (const std::string& name : o.get_snames()) all.push_back('-' + name);
  for (const std::string& name : o.get_lnames()) all.push_back("--" + name);
  return all;
}

std::vector<const CLI::Option*> options_of(const App& app) {
  std::vector<const CLI::Option*> all;
  for (const CLI::Option* o : app.get_options())
    if (!o->get_positional()) all.push_back(o);
  return all;
}

std::string upper(std::string s) {
  for (char& c : s)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return s;
}

void write_options(std::ostream& out, const App& app) {
  out << ".SH OPTIONS\n";
  for (const CLI::Option* o : options_of(app)) {
    out << ".TP\n";
    std::string line;
    for (const std::string& s : spellings(*o)) line += (line.empty() ? "\\fB" : ", \\fB") + troff(s) + "\\fR";
    if (!is_flag(*o)) line += " \\fI" + troff(value_name(*o)) + "\\fR";
    out << line << '\n' << troff(o->get_description());
    if (!o->get_default_str().empty()) out << " (default: " << troff(o->get_default_str()) << ')';
    out << ".\n";
  }
}

const char* input_words =
    "A file is a table of numbers, one point a row: CSV with commas, semicolons, tabs or blanks between the columns "
    "and points or commas in the numbers, both recognised unless an option says which. A first row of words names the "
    "columns; lines that begin with # are comments, of which \"# title: ...\" heads report and picture. The text is "
    "ASCII or UTF\\-8, with or without a byte order mark, its lines end in LF or CRLF. The name \\- is standard "
    "input.\n";

void write_manual(std::ostream& out, const program::command& command) {
  const App& app = *command.app;
  const std::string& name = app.get_name();
  bool reads_files = false;
  for (const CLI::Option* o : app.get_options()) reads_files = reads_files || o->get_positional();
  const bool draws = app.get_option_no_throw("--plot") != nullptr;
  out << ".\\\" Written by the program's build from the options that it declares.\n.TH TESSARN\\-" << upper(name)
      << " 1 \"\" \"Tessarn " << version() << "\" \"User commands\"\n.SH NAME\ntessarn\\-" << name << " \\- "
      << troff(app.get_description()) << "\n.SH SYNOPSIS\n\\fBtessarn " << name << "\\fR [\\fIoptions\\fR]";
  for (const CLI::Option* o : app.get_options())
    if (o->get_positional()) out << " \\fI" << o->get_name(true) << "\\fR";
  out << "\n.SH DESCRIPTION\n" << troff(app.get_description()) << '\n';
  if (!command.details.empty()) out << ".PP\n" << troff(command.details) << '\n';
  if (reads_files) out << ".PP\n" << input_words << ".SH ARGUMENTS\n";
  for (const CLI::Option* o : app.get_options())
    if (o->get_positional())
      out << ".TP\n\\fI" << o->get_name(true) << "\\fR\n" << troff(o->get_description()) << ".\n";
  write_options(out, app);
  out << ".SH EXIT STATUS\n"
      << troff(app.get_footer())
      << "\n.PP\nWhat is wrong is told in one line on the error stream, with file, line and column. Notes beside a "
         "report "
         "go there, too, and on a terminal what takes long.\n";
  if (draws) out << ".SH FILES\nPictures are drawn by gnuplot, which must be found in the path.\n";
  out << ".SH SEE ALSO\n.BR tessarn (1)\n";
}

void write_overview(std::ostream& out, const App& app, const std::vector<program::command>& commands) {
  out << ".\\\" Written by the program's build from the options that it declares.\n.TH TESSARN 1 \"\" \"Tessarn "
      << version() << "\" \"User commands\"\n.SH NAME\ntessarn \\- " << troff(app.get_description())
      << "\n.SH SYNOPSIS\n\\fBtessarn\\fR \\fIcommand\\fR [\\fIoptions\\fR] \\fIfile\\fR\n.SH COMMANDS\n";
  for (const program::command& c : commands)
    out << ".TP\n\\fB" << c.app->get_name() << "\\fR\n" << troff(c.app->get_description()) << '\n';
  write_options(out, app);
  out << ".SH EXIT STATUS\n" << troff(program::exit_codes) << "\n.SH SEE ALSO\n";
  for (std::size_t i = 0; i < commands.size(); ++i)
    out << ".BR tessarn\\-" << commands[i].app->get_name() << (i + 1 < commands.size() ? " (1),\n" : " (1)\n");
}

std::string joined(const App& app) {
  std::string all;
  for (const CLI::Option* o : options_of(app))
    for (const std::string& s : spellings(*o)) all += (all.empty() ? "" : " ") + s;
  return all;
}

void write_bash(std::ostream& out, const App& app, const std::vector<program::command>& commands) {
  std::string names;
  for (const program::command& c : commands) names += (names.empty() ? "" : " ") + c.app->get_name();
  out << "# bash completion for tessarn\n_tessarn() {\n  local word=${COMP_WORDS[COMP_CWORD]} words=\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n    words=\""
      << names << ' ' << joined(app) << "\"\n  else\n    case ${COMP_WORDS[1]} in\n";
  for (const program::command& c : commands)
    out << "      " << c.app->get_name() << ") words=\"" << joined(*c.app) << "\" ;;\n";
  out << "    esac\n    case $word in\n      -*) ;;\n      *) words= ;;\n    esac\n  fi\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n}\n"
         "complete -o default -F _tessarn tessarn\n";
}

// A text within single quotes for zsh and fish.
std::string quoted_for(const std::string& text, const std::string& special) {
  std::string out;
  for (const char c : text) {
    if (c == '\'') {
      out += "'\\''";
      continue;
    }
    if (special.find(c) != special.npos) out += '\\';
    out += c;
  }
  return out;
}

void write_zsh(std::ostream& out, const App& app, const std::vector<program::command>& commands) {
  const auto arguments = [&out](const App& a) {
    for (const CLI::Option* o : options_of(a))
      for (const std::string& s : spellings(*o)) {
        out << " \\\n        '" << s << '[' << quoted_for(o->get_description(), "[]:\\") << ']';
        if (!is_flag(*o)) out << ":value:_files";
        out << '\'';
      }
  };
  out << "#compdef tessarn\nlocal -a commands\ncommands=(\n";
  for (const program::command& c : commands)
    out << "  '" << c.app->get_name() << ':' << quoted_for(c.app->get_description(), ":\\") << "'\n";
  out << ")\nif (( CURRENT == 2 )); then\n  _describe command commands\n  _arguments";
  arguments(app);
  out << "\nelse\n  case $words[2] in\n";
  for (const program::command& c : commands) {
    out << "    " << c.app->get_name() << ")\n      _arguments";
    arguments(*c.app);
    out << " \\\n        '*:file:_files' ;;\n";
  }
  out << "  esac\nfi\n";
}

void write_fish(std::ostream& out, const App& app, const std::vector<program::command>& commands) {
  const auto options = [&out](const App& a, const std::string& condition) {
    for (const CLI::Option* o : options_of(a)) {
      out << "complete -c tessarn -n " << condition;
      for (const std::string& s : o->get_snames()) out << " -s " << s;
      for (const std::string& l : o->get_lnames()) out << " -l " << l;
      out << (is_flag(*o) ? "" : " -r") << " -d '" << quoted_for(o->get_description(), "\\") << "'\n";
    }
  };
  options(app, "__fish_use_subcommand");
  for (const program::command& c : commands) {
    const std::string& name = c.app->get_name();
    out << "complete -c tessarn -n __fish_use_subcommand -a " << name << " -d '"
        << quoted_for(c.app->get_description(), "\\") << "'\n";
    options(*c.app, "'__fish_seen_subcommand_from " + name + "'");
  }
}

// False where a file cannot be written.
bool write_all(const std::string& folder) {
  App app;
  app.name("tessarn");
  app.set_version_flag("--version", "");
  const std::vector<program::command> commands = program::add_commands(app);
  bool good = true;
  const auto file = [&](const std::string& name, const auto& write) {
    std::ofstream out(folder + '/' + name);
    write(out);
    out.close();
    good = good && !out.fail();
  };
  file("tessarn.1", [&](std::ostream& out) { write_overview(out, app, commands); });
  for (const program::command& c : commands)
    file("tessarn-" + c.app->get_name() + ".1", [&](std::ostream& out) { write_manual(out, c); });
  file("tessarn.bash", [&](std::ostream& out) { write_bash(out, app, commands); });
  file("_tessarn", [&](std::ostream& out) { write_zsh(out, app, commands); });
  file("tessarn.fish", [&](std::ostream& out) { write_fish(out, app, commands); });
  return good;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: describe FOLDER\n", stderr);
    return 2;
  }
  try {
    if (write_all(argv[1])) return 0;
    std::fprintf(stderr, "describe: %s: cannot be written\n", argv[1]);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "describe: %s\n", e.what());
  }
  return 1;
}
