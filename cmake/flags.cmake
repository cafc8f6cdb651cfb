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

include(cmake/instruction_sets.cmake)

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
