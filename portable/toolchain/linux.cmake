# Cross-compiles for another processor under Linux with Debian's g++, linked statically, and runs the programs under
# qemu-user. The file that includes this one has set
#   processor  the name of CMake and of qemu
#   compiler   the prefix of the compiler's name
#   emulator   empty where the processor at hand runs the programs itself; else this file sets it
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${processor})
set(CMAKE_C_COMPILER ${compiler}-gcc)
set(CMAKE_CXX_COMPILER ${compiler}-g++)
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)  # no loader and no libraries to be found
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)  # those of this machine are for its own processor
if(NOT DEFINED emulator)
  set(emulator qemu-${processor}-static)
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR "${emulator}" CACHE STRING "runs the tests")
