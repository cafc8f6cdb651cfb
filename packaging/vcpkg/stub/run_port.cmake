# Runs the portfile with stand-ins for the functions of vcpkg that it calls:
#   cmake -DPORT=FOLDER -DWORK=FOLDER -P run_port.cmake
# They do what vcpkg's own functions do for a release build on Linux, as its manual describes them.
set(CURRENT_PORT_DIR "${PORT}")
set(CURRENT_PACKAGES_DIR "${WORK}/packages")

macro(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endmacro()

function(vcpkg_cmake_configure)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "SOURCE_PATH" "OPTIONS;OPTIONS_RELEASE;OPTIONS_DEBUG")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_SOURCE_PATH)
    message(FATAL_ERROR "vcpkg_cmake_configure: ${ARGN}")
  endif()
  run(${CMAKE_COMMAND} -S "${arg_SOURCE_PATH}" -B "${WORK}/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF
      ${arg_OPTIONS} ${arg_OPTIONS_RELEASE})
endfunction()

function(vcpkg_cmake_install)
  run(${CMAKE_COMMAND} --build "${WORK}/build")
  run(${CMAKE_COMMAND} --install "${WORK}/build" --prefix "${CURRENT_PACKAGES_DIR}")
endfunction()

# The folder moves to share/, and the prefix is then one folder nearer.
function(vcpkg_cmake_config_fixup)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "CONFIG_PATH;PACKAGE_NAME" "")
  file(GLOB files "${CURRENT_PACKAGES_DIR}/${arg_CONFIG_PATH}/*")
  file(COPY ${files} DESTINATION "${CURRENT_PACKAGES_DIR}/share/tessarn")
  file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/${arg_CONFIG_PATH}")
  file(GLOB files "${CURRENT_PACKAGES_DIR}/share/tessarn/*.cmake")
  foreach(file ${files})
    file(READ "${file}" text)
    string(REPLACE "/../../../" "/../../" text "${text}")
    string(REPLACE "get_filename_component(_IMPORT_PREFIX \"\${CMAKE_CURRENT_LIST_FILE}\" PATH)\nget_filename_component(_IMPORT_PREFIX \"\${_IMPORT_PREFIX}\" PATH)"
           "get_filename_component(_IMPORT_PREFIX \"\${CMAKE_CURRENT_LIST_FILE}\" PATH)" text "${text}")
    file(WRITE "${file}" "${text}")
  endforeach()
endfunction()

function(vcpkg_fixup_pkgconfig)
endfunction()

include("${PORT}/portfile.cmake")
if(NOT VCPKG_POLICY_SKIP_COPYRIGHT_CHECK AND NOT EXISTS "${CURRENT_PACKAGES_DIR}/share/tessarn/copyright")
  message(FATAL_ERROR "the port installs no copyright")
endif()
