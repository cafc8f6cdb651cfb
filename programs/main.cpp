// The program `tessarn`: one command for each kind of question about measured points.

#include "commands.h"

int main(int argc, char** argv) {
  CLI::App app;
  app.name("tessarn");
  const std::vector<program::command> commands = program::add_commands(app);
  return program::run(app, argc, argv, [&commands](program::report& r) {
    for (const program::command& c : commands)
      if (c.app->parsed()) c.job(r);
  });
}
