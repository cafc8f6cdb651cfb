// The instruction sets that kernels are compiled for, from the plainest to the best: the one list. CMake reads it and
// compiles the kernels once for each set; the choice at run time, the tests and the replay are made from it.
// docs/kernels.md shows how a set is added.
#pragma once

#define TESSARN_SETS_x86_64(X) X(baseline) X(avx2) X(avx512)
#define TESSARN_SETS_other(X) X(baseline)

// With TESSARN_SCALAR_LANES, the way of compilers without vector extensions, there is the baseline alone.
#if (defined(__x86_64__) || defined(_M_X64)) && !defined(TESSARN_SCALAR_LANES)
#define TESSARN_FOR_EACH_SET(X) TESSARN_SETS_x86_64(X)
#else
#define TESSARN_FOR_EACH_SET(X) TESSARN_SETS_other(X)
#endif
