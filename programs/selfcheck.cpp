// tessarn selfcheck: whether the installed library gives the bits that every build gives, as tessarn-selfcheck tells
// it.
#include <tessarn/selfcheck.h>

#include <memory>

#include "commands.h"
#include "selfcheck/listing.h"

using namespace program;

namespace {

struct options {
  bool line = false;
  bool table = false;
  bool as_json = false;
};

const char* word(tessarn::rounding rounds) {
  constexpr const char* words[] = {"nearest", "upward", "downward", "toward zero"};
  return words[static_cast<int>(rounds)];
}

std::string hexadecimal(std::uint64_t hash) {
  char text[20];
  std::snprintf(text, sizeof text, "%016" PRIx64, hash);
  return text;
}

json findings(const tessarn::selfcheck_report& found) {
  json members = json::array();
  for (const tessarn::selfcheck_entry& e : found)
    members.push_back({{"member", e.member},
                       {"inputs", e.inputs},
                       {"found", hexadecimal(e.found)},
                       {"stored", hexadecimal(e.stored)},
                       {"differs", e.differs()}});
  return {{"passed", found.passed()},
          {"line", found.line},
          {"rounding", word(found.rounds)},
          {"subnormal_results_kept", found.subnormal_results_kept},
          {"members", members}};
}

void job(report& r, const options& o) {
  const auto print = [&r](const char* text) { r.line("%s", text); };
  r.as_json = o.as_json;
  const tessarn::selfcheck_report found = tessarn::selfcheck();
  if (o.table) {
    selfcheck_listing::table(found, print);
    return;
  }
  r.findings = findings(found);
  if (!o.line) selfcheck_listing::list(found, print);
  print(found.line);
  if (!found.passed()) throw no_result("the library does not give the results that every build gives");
}

}  // namespace

command program::add_selfcheck(CLI::App& app) {
  CLI::App* selfcheck = app.add_subcommand(
      "selfcheck", "Tells whether the installed library gives the bits that every build of it gives.");
  selfcheck->footer(
      "Exit codes: 0 every result is as stored; 1 one differs, or the answer cannot be written; 2 wrong arguments.");
  const auto o = std::make_shared<options>();
  CLI::Option* line =
      selfcheck->add_flag("--line", o->line, "the answer in one line alone, for a protocol of measurements");
  CLI::Option* table =
      selfcheck->add_flag("--table", o->table, "the hashes found, as the sources of the library hold them");
  selfcheck->add_flag("--json", o->as_json, "print the answer and every hash as JSON")->excludes(line)->excludes(table);
  line->excludes(table);
  return {
      selfcheck, [o](report& r) { job(r, *o); },
      "Calls the members of the library with stored inputs and compares the hashes of the results with the stored "
      "ones. Without an option it lists the members, marks those that differ, and ends with the answer in one line. "
      "The program tessarn-selfcheck, which is there also where this one is not, takes --line and --table and gives "
      "the same answers."};
}
