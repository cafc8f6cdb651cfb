# POWER8, 64 bits, little-endian: vectors of two doubles.
set(processor ppc64le)
set(compiler powerpc64le-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
