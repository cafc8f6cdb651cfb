# 32-bit x86 with SSE2, which cmake/flags.cmake asks for: vectors of two doubles.
set(processor i386)
set(compiler i686-linux-gnu)
if(CMAKE_HOST_SYSTEM_PROCESSOR MATCHES "^(x86_64|i686)$")
  set(emulator "")  # the processor at hand runs it
endif()
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
