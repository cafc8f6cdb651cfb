# tessarn-selfcheck, the program that says whether the library gives the bits that every build gives. It looks at the shared
# library, wherever the two are installed together, unless there is none or programs are linked statically.
add_executable(tessarn-selfcheck selfcheck/program.cpp)
if(TESSARN_STATIC_LIBRARY AND UNIX AND CMAKE_EXE_LINKER_FLAGS MATCHES "(^| )-static( |$)")
  target_link_libraries(tessarn-selfcheck PRIVATE tessarn_static)
else()
  target_link_libraries(tessarn-selfcheck PRIVATE tessarn::tessarn)
endif()
if(MSVC)
  target_compile_definitions(tessarn-selfcheck PRIVATE _CRT_SECURE_NO_WARNINGS)
endif()
if(WIN32)  # beside the module, where Windows looks for it
  set_target_properties(tessarn-selfcheck PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
elseif(APPLE)
  set_target_properties(tessarn-selfcheck PROPERTIES INSTALL_RPATH "@loader_path/../${CMAKE_INSTALL_LIBDIR}")
else()
  set_target_properties(tessarn-selfcheck PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()
if(TESSARN_INSTALL)
  install(TARGETS tessarn-selfcheck RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  if(NOT WIN32 AND NOT TESSARN_PROGRAMS)  # the page of `tessarn selfcheck` tells both
    install(FILES selfcheck/tessarn-selfcheck.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  endif()
endif()
