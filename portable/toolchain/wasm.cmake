# WebAssembly, 32 bits, with Debian's emscripten, run by node: vectors of two doubles.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
set(CMAKE_CXX_FLAGS_INIT "-fexceptions -msimd128")
# The JavaScript around a module is left as it is made: the optimiser for it is not where node looks. The files of the system
# are the program's files, and what the program leaves open when it ends is written.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-O1 -sALLOW_MEMORY_GROWTH=1 -sNODERAWFS=1 -sEXIT_RUNTIME=1")
# A module is read as a file, not fetched as from a server.
set(CMAKE_CROSSCOMPILING_EMULATOR node;--no-experimental-fetch CACHE STRING "runs the tests" FORCE)
