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
  target_link_options(tessarn PRIVATE /debug /opt:ref /opt:icf /Brepro /pdbaltpath:%_PDB%
                      /natvis:${PROJECT_SOURCE_DIR}/tools/tessarn.natvis)
  target_compile_options(tessarn_objects PRIVATE /Z7)
  foreach(set ${TESSARN_INSTRUCTION_SETS})
    target_compile_options(tessarn_objects_${set} PRIVATE /Z7)
  endforeach()
endif()
