// The lines that tessarn-selfcheck and `tessarn selfcheck` print. Each goes to a function of the caller, without its
// end.
#pragma once

#include <tessarn/selfcheck.h>

#include <cinttypes>
#include <cstdio>

namespace selfcheck_listing {

// The members with the hashes found; those that differ show the stored hash, too.
template <class Line>
void list(const tessarn::selfcheck_report& report, Line line) {
  char text[200];
  for (const tessarn::selfcheck_entry& e : report) {
    const int length = std::snprintf(text, sizeof text, "%-44s %-8s %016" PRIx64, e.member, e.inputs, e.found);
    if (e.differs())
      std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length), "   DIFFERS, stored %016" PRIx64,
                    e.stored);
    line(text);
  }
}

// The hashes found, as selfcheck/stored.h holds them.
template <class Line>
void table(const tessarn::selfcheck_report& report, Line line) {
  line("// The hashes of the results that every build gives, written by tools/update_selfcheck.sh.");
  line("#pragma once");
  line("");
  line("#include \"selfcheck/members.h\"");
  line("");
  line("namespace tessarn::detail {");
  line("");
  line("constexpr stored_hash_line stored_hashes[] = {");
  char text[200];
  for (const tessarn::selfcheck_entry& e : report) {
    std::snprintf(text, sizeof text, "    {\"%s\", \"%s\", 0x%016" PRIx64 "u},", e.member, e.inputs, e.found);
    line(text);
  }
  line("};");
  line("");
  line("}  // namespace tessarn::detail");
}

}  // namespace selfcheck_listing
