# IBM Z, 64 bits, big-endian: no vectors in the processors that Debian is built for.
set(processor s390x)
set(compiler s390x-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
