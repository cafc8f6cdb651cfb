# Cross-compiles for 64-bit Windows with Microsoft's C++ ABI: clang-cl and
# lld-link, libc++'s headers, wine's C headers, and in place of the vendor's
# run-time libraries the small set made from windows/toolchain/msvc-abi.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_VERSION 10.0)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

# Not older: up to clang 19 the first virtual slot holds the scalar deleting
# destructor, and a Microsoft-compiled delete[] of an array goes wrong.
set(LLVM_VERSION 22 CACHE STRING "version of clang, lld and libc++")
set(LIBCXX_INCLUDE /usr/lib/llvm-${LLVM_VERSION}/include/c++/v1 CACHE PATH "libc++ headers")
set(WINE_INCLUDE /usr/include/wine/wine CACHE PATH "wine's headers")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES LLVM_VERSION LIBCXX_INCLUDE WINE_INCLUDE MSVC_ABI_LIB)

foreach(t clang-cl lld-link llvm-lib llvm-rc llvm-mt llvm-dlltool)
  string(MAKE_C_IDENTIFIER ${t} v)
  find_program(MSVC_ABI_${v} NAMES ${t}-${LLVM_VERSION} REQUIRED)
  mark_as_advanced(MSVC_ABI_${v})
endforeach()
set(CMAKE_LINKER ${MSVC_ABI_lld_link})
set(CMAKE_AR ${MSVC_ABI_llvm_lib})
set(CMAKE_RC_COMPILER ${MSVC_ABI_llvm_rc})
set(CMAKE_MT ${MSVC_ABI_llvm_mt})

set(src ${CMAKE_CURRENT_LIST_DIR}/msvc-abi)
set(includes "-imsvc${src}/include" "-imsvc${WINE_INCLUDE}/msvcrt" "-imsvc${WINE_INCLUDE}/windows")
foreach(l C CXX)
  set(CMAKE_${l}_COMPILER ${MSVC_ABI_clang_cl})
  set(CMAKE_${l}_COMPILER_TARGET x86_64-pc-windows-msvc)
  list(JOIN includes "\" \"" flags)
  set(CMAKE_${l}_FLAGS_INIT "/GS- \"${flags}\"")
  set(CMAKE_${l}_STANDARD_LIBRARIES kernel32.lib CACHE STRING "")
endforeach()
string(PREPEND CMAKE_CXX_FLAGS_INIT "\"/clang:-isystem${LIBCXX_INCLUDE}\" -D_LIBCPP_NO_AUTO_LINK -D_LIBCPP_DISABLE_VISIBILITY_ANNOTATIONS ")
set(CMAKE_MSVC_RUNTIME_LIBRARY MultiThreadedDLL)  # the only one there is here, also in Debug

# The run-time libraries, made at configuration when missing or out of date:
# msvcrt.lib (start-up code and imports of the C run-time), kernel32.lib, and an
# empty oldnames.lib, the names which the compiler asks the linker for.
if(NOT MSVC_ABI_LIB)
  set(MSVC_ABI_LIB ${CMAKE_BINARY_DIR}/msvc-abi CACHE INTERNAL "")
endif()
file(GLOB_RECURSE inputs ${src}/*)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${inputs})
set(stale FALSE)
foreach(f ${inputs} ${CMAKE_CURRENT_LIST_FILE})
  if(${f} IS_NEWER_THAN ${MSVC_ABI_LIB}/msvcrt.lib)
    set(stale TRUE)
  endif()
endforeach()
if(stale)
  file(MAKE_DIRECTORY ${MSVC_ABI_LIB})
  set(members)
  file(GLOB parts ${src}/lib/*.def ${src}/src/*.cpp ${src}/src/*.s)
  foreach(f ${parts})
    get_filename_component(n ${f} NAME_WE)
    if(f MATCHES "\\.def$")
      set(out ${MSVC_ABI_LIB}/${n}.lib)
      execute_process(COMMAND ${MSVC_ABI_llvm_dlltool} -m i386:x86-64 -d ${f} -l ${out} COMMAND_ERROR_IS_FATAL ANY)
    else()
      set(out ${MSVC_ABI_LIB}/${n}.obj)
      set(rtti /GR)
      if(n STREQUAL "type_info")
        set(rtti /GR-)  # with RTTI the table would need itself under another name
      endif()
      execute_process(
        COMMAND ${MSVC_ABI_clang_cl} --target=x86_64-pc-windows-msvc /nologo /c /O2 /MD /EHsc /GS- ${rtti} /clang:-std=c++17
          -Wno-unused-command-line-argument ${includes} /Fo${out} -- ${f}
        WORKING_DIRECTORY ${MSVC_ABI_LIB} COMMAND_ERROR_IS_FATAL ANY)
    endif()
    if(NOT n STREQUAL "kernel32")
      get_filename_component(out ${out} NAME)
      list(APPEND members ${out})  # without folders, which would end in the debug information of what links it
    endif()
  endforeach()
  execute_process(COMMAND ${MSVC_ABI_llvm_lib} /nologo /llvmlibempty /out:${MSVC_ABI_LIB}/oldnames.lib COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${MSVC_ABI_llvm_lib} /nologo /out:msvcrt.lib ${members}
                  WORKING_DIRECTORY ${MSVC_ABI_LIB} COMMAND_ERROR_IS_FATAL ANY)
endif()
foreach(k EXE SHARED MODULE)
  set(CMAKE_${k}_LINKER_FLAGS_INIT "\"/libpath:${MSVC_ABI_LIB}\" /manifest:no")
endforeach()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/run-wine.sh;${CMAKE_BINARY_DIR}/wine" CACHE STRING "runs the tests")
