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
  # GCC for Windows believes that an inline function is the one that it has compiled itself, and keeps values in registers
  # that this one leaves alone. The linker may take the function from a file of other options, which changes them.
  if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(tessarn_flags INTERFACE -fno-ipa-ra)
  endif()
endif()

# The library is optimised also in a project without a build type, unless that project's own flags name a level.
function(tessarn_optimise target)
  if(MSVC)
    set(option /O2)
  else()
    set(option -O3)
  endif()
  set(level "(^| )[-/]O")
  if(NOT CMAKE_CXX_FLAGS MATCHES "${level}")
    target_compile_options(${target} PRIVATE $<$<CONFIG:>:${option}>)
  endif()
  if(NOT MSVC AND CMAKE_CXX_FLAGS_RELWITHDEBINFO STREQUAL "-O2 -g -DNDEBUG")  # the level that CMake puts there
    target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:${option}>)
  endif()
endfunction()

if(MSVC AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 22)
  message(FATAL_ERROR "clang-cl before 22 does not put the vector deleting destructor into virtual tables")
endif()

# x86 with 32 or 64 bits; 0 on other processors, and with emscripten, which gives its machine out for x86.
set(TESSARN_X86_BITS 0)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86|x86_64|AMD64|amd64)$" AND NOT EMSCRIPTEN)
  math(EXPR TESSARN_X86_BITS "8 * ${CMAKE_SIZEOF_VOID_P}")
endif()

# 32-bit x86 computes in its x87 unit unless told otherwise, and that rounds to another format. Callers need the flags as
# well; without them the headers refuse to be compiled.
set(TESSARN_CALLER_FLAGS "")
if(TESSARN_X86_BITS EQUAL 32 AND NOT MSVC)
  set(TESSARN_CALLER_FLAGS -msse2 -mfpmath=sse)
endif()

include(cmake/instruction_sets.cmake)
target_compile_options(tessarn_flags INTERFACE ${TESSARN_CALLER_FLAGS})
if(TESSARN_SCALAR_LANES)
  target_compile_definitions(tessarn_flags INTERFACE TESSARN_SCALAR_LANES)
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
