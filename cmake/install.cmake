# The install tree, the build tree export, find_package(tessarn) and pkg-config.

include(CMakePackageConfigHelpers)

set(installed tessarn)
if(TESSARN_STATIC_LIBRARY)
  list(APPEND installed tessarn_static)
endif()

install(TARGETS ${installed} EXPORT tessarn-targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/tessarn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

if(MSVC)
  install(FILES $<TARGET_PDB_FILE:tessarn> DESTINATION ${CMAKE_INSTALL_BINDIR} OPTIONAL)
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
  # gdb loads it by itself for a library in this folder, when it looks under this prefix (as it does for /usr).
  if(NOT APPLE)
    install(FILES tools/gdb/tessarn.py DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}
            RENAME libtessarn.so.${PROJECT_VERSION}-gdb.py)
  endif()
  configure_file(cmake/tessarn.pc.in ${PROJECT_BINARY_DIR}/tessarn.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/tessarn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
