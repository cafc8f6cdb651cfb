# What makes the shared library the Windows module: its names, the loader entry, the version resource.

enable_language(RC)
configure_file(${PROJECT_SOURCE_DIR}/windows/version.rc.in ${PROJECT_BINARY_DIR}/version.rc @ONLY)
target_sources(tessarn PRIVATE windows/dllmain.cpp ${PROJECT_BINARY_DIR}/version.rc)

# The same file names from every compiler.
set_target_properties(tessarn PROPERTIES
  OUTPUT_NAME Tessarn_x64 PREFIX "" IMPORT_PREFIX ""
  RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

if(MSVC)
  # The same input gives the same file, without the paths of this machine; the debug information lies beside it.
  set(natvis ${PROJECT_SOURCE_DIR}/tools/tessarn.natvis)
  set(options /Z7)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    list(APPEND options /clang:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=/tessarn /clang:-fdebug-compilation-dir=.
         /clang:-gno-codeview-command-line)
    if(CMAKE_GENERATOR STREQUAL "Ninja" AND PROJECT_IS_TOP_LEVEL)  # links in the build folder, whose parts need no path
      target_link_options(tessarn PRIVATE /pdbsourcepath:/tessarn/build)
      file(RELATIVE_PATH natvis ${PROJECT_BINARY_DIR} ${natvis})
      string(REPLACE "${PROJECT_BINARY_DIR}/" "" CMAKE_SHARED_LINKER_FLAGS "${CMAKE_SHARED_LINKER_FLAGS}")
    endif()
  endif()
  target_link_options(tessarn PRIVATE /debug /opt:ref /opt:icf /Brepro /pdbaltpath:%_PDB% /natvis:${natvis})
  target_compile_options(tessarn_objects PRIVATE "${options}")
  foreach(set ${TESSARN_INSTRUCTION_SETS})
    target_compile_options(tessarn_objects_${set} PRIVATE "${options}")
  endforeach()
endif()
