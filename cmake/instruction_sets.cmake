# The instruction sets of simd/sets.h, as TESSARN_INSTRUCTION_SETS, and the compiler's flags for each, as
# TESSARN_FLAGS_<set>. Kernels are compiled once for each of them.

set(TESSARN_FLAGS_baseline "")
if(TESSARN_X86_BITS EQUAL 64 AND NOT TESSARN_SCALAR_LANES)
  set(sets TESSARN_SETS_x86_64)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "MSVC")
    set(TESSARN_FLAGS_avx2 /arch:AVX2)
    set(TESSARN_FLAGS_avx512 /arch:AVX512)
  else()  # also clang-cl, whose /arch:AVX2 would allow more than AVX2
    set(TESSARN_FLAGS_avx2 -mavx2 -mbmi2)
    set(TESSARN_FLAGS_avx512 -mbmi2 -mavx512f -mavx512dq -mavx512cd -mavx512bw -mavx512vl -mprefer-vector-width=512)
  endif()
else()
  set(sets TESSARN_SETS_other)
endif()

file(STRINGS ${PROJECT_SOURCE_DIR}/simd/sets.h line REGEX "^#define ${sets}[(]X[)]")
string(REGEX MATCHALL "X[(][a-z0-9_]+[)]" TESSARN_INSTRUCTION_SETS "${line}")
list(TRANSFORM TESSARN_INSTRUCTION_SETS REPLACE "X[(](.*)[)]" "\\1")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/simd/sets.h)
if(NOT TESSARN_INSTRUCTION_SETS)
  message(FATAL_ERROR "no instruction sets in simd/sets.h")
endif()
foreach(set ${TESSARN_INSTRUCTION_SETS})
  if(NOT DEFINED TESSARN_FLAGS_${set})
    message(FATAL_ERROR "the instruction set ${set} of simd/sets.h has no flags in cmake/instruction_sets.cmake")
  endif()
  if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT set STREQUAL baseline)
    # GCC takes the stack for aligned to 32 bytes where Windows promises 16 (GCC bug 54412).
    list(APPEND TESSARN_FLAGS_${set} -Wa,-muse-unaligned-vector-move)
  endif()
endforeach()
