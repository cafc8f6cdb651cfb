# ARMv7 with floating-point registers, 32 bits, little-endian: no vectors of doubles.
set(processor arm)
set(compiler arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
