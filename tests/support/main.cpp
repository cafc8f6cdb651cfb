// The main function of the test programs. --isa=SET, a name of simd/sets.h, chooses the build of the kernels; the
// program ends with code 77, and the run counts as skipped, where the processor does not have it.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "support/instruction_set.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (!test::limit_by_environment()) return 2;
  for (int i = 1; i < argc; ++i) {
    tessarn::detail::isa set;
    if (std::strncmp(argv[i], "--isa=", 6) != 0 || !test::set_of(argv[i] + 6, set)) {
      std::fprintf(stderr, "unknown argument: %s\n", argv[i]);
      return 2;
    }
    if (!test::choose(set) && !::testing::GTEST_FLAG(list_tests)) return 77;
  }
  return RUN_ALL_TESTS();
}
