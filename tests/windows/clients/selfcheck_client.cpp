// The self-check through the module.
#include <tessarn/selfcheck.h>

#include "check.h"

int main() {
  const tessarn::selfcheck_report r = tessarn::selfcheck();
  CHECK(r.count > 100 && r.count <= tessarn::selfcheck_report::capacity);
  CHECK(r.passed());
  CHECK(r.rounds == tessarn::rounding::nearest);
  for (const tessarn::selfcheck_entry& e : r)
    if (e.differs()) std::printf("%s, %s inputs: differs\n", e.member, e.inputs);
  std::printf("%s\n", r.line);
  return check::finish();
}
