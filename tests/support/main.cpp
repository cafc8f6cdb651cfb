// The main function of the test programs. --isa=baseline|avx2|avx512 chooses the build of the kernels; what the
// processor does not have is replaced by the best that it has.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "core/isa.h"

int main(int argc, char** argv) {
  using tessarn::detail::isa;
  ::testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--isa=baseline") == 0) {
      tessarn::detail::force_isa(isa::baseline);
    } else if (std::strcmp(argv[i], "--isa=avx2") == 0) {
      tessarn::detail::force_isa(isa::avx2);
    } else if (std::strcmp(argv[i], "--isa=avx512") == 0) {
      tessarn::detail::force_isa(isa::avx512);
    } else {
      std::fprintf(stderr, "unknown argument: %s\n", argv[i]);
      return 2;
    }
  }
  return RUN_ALL_TESTS();
}
