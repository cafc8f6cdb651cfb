# A program with the debug run-time needs the Debug module. Where the package holds one, its users say so to the headers,
# which otherwise refuse to be compiled for that run-time; a build that would only come to that ends here.
get_target_property(tessarn_configurations tessarn::tessarn IMPORTED_CONFIGURATIONS)
if("DEBUG" IN_LIST tessarn_configurations)
  set_property(TARGET tessarn::tessarn APPEND PROPERTY INTERFACE_COMPILE_DEFINITIONS $<$<CONFIG:Debug>:TESSARN_DEBUG_MODULE>)
elseif(CMAKE_BUILD_TYPE STREQUAL "Debug" AND (NOT CMAKE_MSVC_RUNTIME_LIBRARY OR CMAKE_MSVC_RUNTIME_LIBRARY MATCHES "Debug"))
  set(tessarn_FOUND FALSE)
  set(tessarn_NOT_FOUND_MESSAGE "this package of tessarn holds the Release module alone, and a program with the debug \
run-time must not use it: build tessarn in Debug too, or set CMAKE_MSVC_RUNTIME_LIBRARY to MultiThreadedDLL")
  return()
endif()
unset(tessarn_configurations)
