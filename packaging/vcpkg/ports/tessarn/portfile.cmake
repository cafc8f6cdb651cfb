# An overlay port: it builds the sources in which it lies.
#   vcpkg install tessarn --overlay-ports=packaging/vcpkg/ports
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../../.." ABSOLUTE)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS -DTESSARN_TESTS=OFF -DTESSARN_EXAMPLES=OFF -DTESSARN_SELFCHECK=OFF -DTESSARN_INSTALL=ON)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/tessarn)
if(EXISTS "${CURRENT_PACKAGES_DIR}/lib/pkgconfig")  # there is none on Windows
  vcpkg_fixup_pkgconfig()
endif()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")

# The owner has named no licence, so there is no file of it to install.
set(VCPKG_POLICY_SKIP_COPYRIGHT_CHECK enabled)
