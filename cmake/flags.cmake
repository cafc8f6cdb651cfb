# One floating-point model in every build: no contraction to fused multiply-add, no errno from the math
# functions. tessarn_flags carries it to the library's own sources only.

add_library(tessarn_flags INTERFACE)
target_compile_features(tessarn_flags INTERFACE cxx_std_20)
if(MSVC)
  target_compile_options(tessarn_flags INTERFACE /W4)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(tessarn_flags INTERFACE /clang:-ffp-contract=off /clang:-fno-math-errno)
  else()
    target_compile_options(tessarn_flags INTERFACE /fp:precise)
  endif()
else()
  target_compile_options(tessarn_flags INTERFACE -Wall -Wextra -Wpedantic -ffp-contract=off -fno-math-errno)
endif()

if(MSVC AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 22)
  message(FATAL_ERROR "clang-cl before 22 does not put the vector deleting destructor into virtual tables")
endif()

# Kernels are compiled once for each of these instruction sets (core/isa.h).
set(TESSARN_INSTRUCTION_SETS baseline)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  list(APPEND TESSARN_INSTRUCTION_SETS avx2 avx512)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "MSVC")
    set(TESSARN_FLAGS_avx2 /arch:AVX2)
    set(TESSARN_FLAGS_avx512 /arch:AVX512)
  else()  # also clang-cl, whose /arch:AVX2 would allow more than AVX2
    set(TESSARN_FLAGS_avx2 -mavx2 -mbmi2)
    set(TESSARN_FLAGS_avx512 -mbmi2 -mavx512f -mavx512dq -mavx512cd -mavx512bw -mavx512vl -mprefer-vector-width=512)
  endif()
  if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC takes the stack for aligned to 32 bytes where Windows promises 16 (GCC bug 54412).
    list(APPEND TESSARN_FLAGS_avx2 -Wa,-muse-unaligned-vector-move)
    list(APPEND TESSARN_FLAGS_avx512 -Wa,-muse-unaligned-vector-move)
  endif()
endif()

if(TESSARN_SANITIZE)
  add_compile_options(-fsanitize=${TESSARN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TESSARN_SANITIZE})
endif()
if(TESSARN_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(TESSARN_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()
