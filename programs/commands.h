// The commands of the program `tessarn`. Each adds itself with its options; the options live as long as the returned
// job.
#pragma once

#include "support/report.h"

namespace program {

command add_curve(CLI::App& app);
command add_align(CLI::App& app);
command add_flatness(CLI::App& app);
command add_outliers(CLI::App& app);
command add_selfcheck(CLI::App& app);

// All of them, in the order of the help.
inline std::vector<command> add_commands(CLI::App& app) {
  app.description("Measured points: curves, motions, planes, wild readings.");
  app.footer(std::string(exit_codes) + "\n`tessarn COMMAND --help` has the options of a command.");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // /FILE is a path there, too
  std::vector<command> all = {add_curve(app), add_align(app), add_flatness(app), add_outliers(app), add_selfcheck(app)};
  for (const command& c : all) {
    if (c.app->get_footer().empty()) c.app->footer(exit_codes);
    c.app->set_version_flag("--version", version_line("tessarn " + c.app->get_name()));
  }
  return all;
}

}  // namespace program
