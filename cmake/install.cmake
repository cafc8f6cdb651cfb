# The install tree, the build tree export, find_package(tessarn) and pkg-config.

include(CMakePackageConfigHelpers)

set(installed)
if(TESSARN_SHARED_LIBRARY)
  list(APPEND installed tessarn)
endif()
if(TESSARN_STATIC_LIBRARY)
  list(APPEND installed tessarn_static)
endif()

install(TARGETS ${installed} EXPORT tessarn-targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/tessarn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

if(MSVC AND TESSARN_SHARED_LIBRARY)
  install(FILES $<TARGET_PDB_FILE:tessarn> DESTINATION ${CMAKE_INSTALL_BINDIR} OPTIONAL)
endif()

# What differs between packages: the names to link, and the alias of a package with the static library alone.
set(package_targets tessarn::tessarn)
set(package_alias "")
if(NOT TESSARN_SHARED_LIBRARY)
  set(package_alias "if(NOT TARGET tessarn::tessarn)\n  add_library(tessarn::tessarn ALIAS tessarn::static)\nendif()\n")
elseif(TESSARN_STATIC_LIBRARY)
  string(APPEND package_targets " or tessarn::static")
endif()

# Visual Studio's Debug configuration would take the Release module without a word; the two have different heaps.
set(package_debug "")
if(MSVC AND TESSARN_SHARED_LIBRARY)
  file(READ cmake/debug-module.cmake package_debug)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tessarn)
install(EXPORT tessarn-targets NAMESPACE tessarn:: DESTINATION ${package_dir})
export(EXPORT tessarn-targets NAMESPACE tessarn:: FILE ${PROJECT_BINARY_DIR}/tessarn-targets.cmake)
configure_package_config_file(cmake/tessarn-config.cmake.in ${PROJECT_BINARY_DIR}/tessarn-config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tessarn-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tessarn-config.cmake ${PROJECT_BINARY_DIR}/tessarn-config-version.cmake
        DESTINATION ${package_dir})

if(NOT WIN32)
  # The package may be moved: its prefix is found from the folder of the file, also below lib/<architecture>.
  file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" prefix_from_pkgconfig "${prefix_from_pkgconfig}")
  # gdb loads the views by itself from beside the library, once its folder is in gdb's auto-load safe-path; for a
  # library under /usr from gdb's own folder, as distributions want it. The prefix may be chosen when installing.
  if(NOT APPLE AND TESSARN_SHARED_LIBRARY)
    install(CODE "
      set(views \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\")
      if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
        string(PREPEND views \"/usr/share/gdb/auto-load\")
      endif()
      file(INSTALL \"${PROJECT_SOURCE_DIR}/tools/gdb/tessarn.py\" DESTINATION \"\${views}\"
           RENAME libtessarn.so.${PROJECT_VERSION}-gdb.py)")
  endif()
  install(FILES tools/lldb/tessarn_lldb.py DESTINATION ${CMAKE_INSTALL_DATADIR}/tessarn)  # loaded by a line in ~/.lldbinit
  list(JOIN TESSARN_CALLER_FLAGS " " package_flags)
  if(package_flags)
    string(PREPEND package_flags " ")
  endif()
  configure_file(cmake/tessarn.pc.in ${PROJECT_BINARY_DIR}/tessarn.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/tessarn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
