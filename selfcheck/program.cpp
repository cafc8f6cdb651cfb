// tessarn-selfcheck: whether the library gives the bits that every build gives. Ends with 0 if so, with 1 if not.
// `tessarn selfcheck` (programs/) prints the same lines.
//   tessarn-selfcheck            the list of members, those that differ marked, and the one-line answer
//   tessarn-selfcheck --line     the one-line answer alone, for a protocol of measurements
//   tessarn-selfcheck --table    the hashes found, as selfcheck/stored.h holds them
#include <tessarn/selfcheck.h>

#include <cstdio>
#include <cstring>
#include <exception>

#include "listing.h"

namespace {

int run(const char* wish) {
  const tessarn::selfcheck_report r = tessarn::selfcheck();
  const auto print = [](const char* line) { std::printf("%s\n", line); };
  if (std::strcmp(wish, "--table") == 0) {
    selfcheck_listing::table(r, print);
    return 0;
  }
  if (std::strcmp(wish, "--line") != 0) selfcheck_listing::list(r, print);
  std::printf("%s\n", r.line);
  return r.passed() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const char* const wish = argc == 2 ? argv[1] : "";
  if (argc > 2 || (*wish && std::strcmp(wish, "--line") != 0 && std::strcmp(wish, "--table") != 0)) {
    std::printf("usage: tessarn-selfcheck [--line | --table]\n");
    return 2;
  }
  try {
    return run(wish);
  } catch (const std::exception& e) {
    std::printf("tessarn-selfcheck: %s\n", e.what());
    return 2;
  }
}
