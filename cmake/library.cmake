# The library, shared and static, from one list of sources.

set(TESSARN_SOURCES
  simd/isa.cpp
  core/angles/angles.cpp
  core/angles/decision.cpp
  core/angles/fixed_sine.cpp
  core/angles/reduction.cpp
  core/power.cpp
  core/shared_array.cpp
  vectors/allocate.cpp
  vectors/kernels/in_use.cpp
  vectors/list.cpp
  vectors/list_analysis.cpp
  vectors/list_sort.cpp
  vectors/point_array.cpp
  matrix/adjugate.cpp
  matrix/complex_elimination.cpp
  matrix/determinant.cpp
  matrix/factors.cpp
  matrix/gram.cpp
  matrix/kernels/in_use.cpp
  matrix/linear.cpp
  matrix/lu.cpp
  matrix/mat.cpp
  matrix/mat_complex.cpp
  matrix/match.cpp
  matrix/multiply.cpp
  matrix/sqmat.cpp
  matrix/sqmat_complex.cpp
  matrix/svd.cpp
  matrix/unchecked.cpp
  poly/binom.cpp
  poly/curve.cpp
  poly/curve_blocks.cpp
  poly/fit.cpp
  poly/kernels/in_use.cpp
  poly/line_sums.cpp
  poly/power_sums.cpp
  poly/samples.cpp
  poly/search.cpp
  poly/surface.cpp
  poly/surface_fit.cpp
  geometry/bounds.cpp
  geometry/cloud.cpp
  geometry/duplicates.cpp
  geometry/extremes.cpp
  geometry/kernels/in_use.cpp
  geometry/line3d.cpp
  geometry/normal_search.cpp
  geometry/plane.cpp
  geometry/plane_fit.cpp
  geometry/residual_model.cpp
  analysis/align.cpp
  analysis/bernstein.cpp
  analysis/curve.cpp
  analysis/dense_inverse.cpp
  analysis/determinant.cpp
  analysis/double_system.cpp
  analysis/eigen3.cpp
  analysis/exact_polynomial.cpp
  analysis/fit.cpp
  analysis/fit_circle.cpp
  analysis/fit_cylinder.cpp
  analysis/fit_data.cpp
  analysis/fit_line.cpp
  analysis/fit_robust.cpp
  analysis/fit_surface.cpp
  analysis/flatness.cpp
  analysis/hull.cpp
  analysis/integer.cpp
  analysis/isolation.cpp
  analysis/kernels/in_use.cpp
  analysis/least_squares.cpp
  analysis/multiplicities.cpp
  analysis/normal_equations.cpp
  analysis/orientation.cpp
  analysis/outermost.cpp
  analysis/polytope.cpp
  analysis/refinement.cpp
  analysis/rotation.cpp
  analysis/round_fit.cpp
  analysis/round_search.cpp
  analysis/shape_data.cpp
  analysis/solve.cpp
  analysis/status.cpp
  analysis/verified_inverse.cpp
  analysis/width.cpp
  selfcheck/analysis.cpp
  selfcheck/geometry.cpp
  selfcheck/matrices.cpp
  selfcheck/polynomials.cpp
  selfcheck/selfcheck.cpp
  selfcheck/values.cpp)

# Each is compiled once for each instruction set, in a namespace of that name.
set(TESSARN_KERNELS
  matrix/kernels/adjugate.cpp
  matrix/kernels/table.cpp
  poly/kernels/table.cpp
  geometry/kernels/table.cpp
  vectors/kernels/table.cpp
  analysis/kernels/shape_table.cpp
  analysis/kernels/table.cpp)

# The chains of powers are written in an order that hides the latency of their steps, which GCC is to keep, and their
# tests of single numbers should run in the integer units.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set_source_files_properties(poly/kernels/table.cpp PROPERTIES COMPILE_OPTIONS "-fno-tree-ter;-fno-tree-reassoc")
  if(TESSARN_X86_BITS EQUAL 64)
    set_property(SOURCE poly/kernels/table.cpp APPEND PROPERTY COMPILE_OPTIONS -mno-stv)
  endif()
endif()

# The self-check calls every member once: nothing there is worth the size of fast code.
if(NOT MSVC)
  file(GLOB selfcheck CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/selfcheck/*.cpp)
  set_source_files_properties(${selfcheck} PROPERTIES COMPILE_OPTIONS -Os)
endif()

file(GLOB TESSARN_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/tessarn/*.h)

# Compiles the objects of the library with the given definition; <name>_ALL lists them.
function(tessarn_add_objects name definition)
  add_library(${name} OBJECT ${TESSARN_SOURCES})
  set(objects $<TARGET_OBJECTS:${name}>)
  foreach(set ${TESSARN_INSTRUCTION_SETS})
    if(TESSARN_KERNELS)
      add_library(${name}_${set} OBJECT ${TESSARN_KERNELS})
      target_compile_definitions(${name}_${set} PRIVATE TESSARN_ISA=${set} TESSARN_ISA_${set})
      target_compile_options(${name}_${set} PRIVATE ${TESSARN_FLAGS_${set}} "$<$<CXX_COMPILER_ID:GNU>:-Wno-psabi;-fno-tree-slp-vectorize>")
      list(APPEND objects $<TARGET_OBJECTS:${name}_${set}>)
    endif()
  endforeach()
  list(TRANSFORM TESSARN_INSTRUCTION_SETS PREPEND ${name}_ OUTPUT_VARIABLE kernels)
  foreach(target ${name} ${kernels})
    if(TARGET ${target})
      target_link_libraries(${target} PRIVATE tessarn_flags)
      target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
      target_compile_definitions(${target} PRIVATE ${definition})
      set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                            VISIBILITY_INLINES_HIDDEN ON CXX_EXTENSIONS OFF)
      tessarn_optimise(${target})
    endif()
  endforeach()
  # For 32-bit ARM, GCC 12 at -O3 does not end within minutes over the unrolled loops of the polynomials' kernels, and takes
  # gigabytes; at -O2 it takes seconds.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_SYSTEM_PROCESSOR MATCHES "^arm" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(${name}_baseline PRIVATE $<$<NOT:$<CONFIG:Debug>>:-O2>)
  endif()
  set(${name}_ALL ${objects} PARENT_SCOPE)
endfunction()

function(tessarn_common target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_compile_options(${target} PUBLIC ${TESSARN_CALLER_FLAGS})
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                              $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endfunction()

if(TESSARN_SHARED_LIBRARY OR NOT WIN32)
  tessarn_add_objects(tessarn_objects TESSARN_BUILD)
endif()

if(TESSARN_SHARED_LIBRARY)
  add_library(tessarn SHARED ${tessarn_objects_ALL})
  add_library(tessarn::tessarn ALIAS tessarn)
  tessarn_common(tessarn)
  set_target_properties(tessarn PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(MSVC)  # the headers refuse a program with the debug run-time otherwise
    target_compile_definitions(tessarn INTERFACE $<BUILD_INTERFACE:$<$<CONFIG:Debug>:TESSARN_DEBUG_MODULE>>)
  endif()
  if(WIN32)
    include(windows/module.cmake)
  elseif(NOT APPLE)
    target_link_options(tessarn PRIVATE LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
    set_target_properties(tessarn PROPERTIES LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  endif()
endif()

if(TESSARN_STATIC_LIBRARY)
  if(WIN32)
    tessarn_add_objects(tessarn_static_objects TESSARN_STATIC)
    add_library(tessarn_static STATIC ${tessarn_static_objects_ALL})
    target_compile_definitions(tessarn_static PUBLIC TESSARN_STATIC)
  else()
    add_library(tessarn_static STATIC ${tessarn_objects_ALL})
    set_target_properties(tessarn_static PROPERTIES OUTPUT_NAME tessarn)
  endif()
  add_library(tessarn::static ALIAS tessarn_static)
  tessarn_common(tessarn_static)
  set_target_properties(tessarn_static PROPERTIES EXPORT_NAME static)
  if(NOT TESSARN_SHARED_LIBRARY)  # who links the library without saying which gets the one there is
    add_library(tessarn::tessarn ALIAS tessarn_static)
  endif()
endif()
