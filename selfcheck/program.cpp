// tessarn-selfcheck: whether the library gives the bits that every build gives. Ends with 0 if so, with 1 if not.
//   tessarn-selfcheck            the list of members, those that differ marked, and the one-line answer
//   tessarn-selfcheck --line     the one-line answer alone, for a protocol of measurements
//   tessarn-selfcheck --table    the hashes found, as selfcheck/stored.h holds them
#include <tessarn/selfcheck.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <exception>

namespace {

void print_list(const tessarn::selfcheck_report& r) {
  for (const tessarn::selfcheck_entry& e : r) {
    std::printf("%-44s %-8s %016" PRIx64, e.member, e.inputs, e.found);
    if (e.differs()) std::printf("   DIFFERS, stored %016" PRIx64, e.stored);
    std::printf("\n");
  }
}

void print_table(const tessarn::selfcheck_report& r) {
  std::printf(
      "// The hashes of the results that every build gives, written by tools/update_selfcheck.sh.\n#pragma once\n\n"
      "#include \"selfcheck/members.h\"\n\nnamespace tessarn::detail {\n\n"
      "constexpr stored_hash_line stored_hashes[] = {\n");
  for (const tessarn::selfcheck_entry& e : r)
    std::printf("    {\"%s\", \"%s\", 0x%016" PRIx64 "u},\n", e.member, e.inputs, e.found);
  std::printf("};\n\n}  // namespace tessarn::detail\n");
}

int run(const char* wish) {
  const tessarn::selfcheck_report r = tessarn::selfcheck();
  if (std::strcmp(wish, "--table") == 0) {
    print_table(r);
    return 0;
  }
  if (std::strcmp(wish, "--line") != 0) print_list(r);
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
