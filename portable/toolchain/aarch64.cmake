# AArch64, 64 bits, little-endian: vectors of two doubles.
set(processor aarch64)
set(compiler aarch64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
