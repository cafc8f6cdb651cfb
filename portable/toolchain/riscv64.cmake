# RISC-V, 64 bits, little-endian: no vectors.
set(processor riscv64)
set(compiler riscv64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
