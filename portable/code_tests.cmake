# What the compiled library must and must not contain, on processors other than x86-64.
set(check ${PROJECT_SOURCE_DIR}/portable/check_code.sh)
add_test(NAME code/no_fused COMMAND ${check} no_fused ${CMAKE_OBJDUMP} ${CMAKE_SYSTEM_PROCESSOR} $<TARGET_FILE:tessarn>)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "i386")
  add_test(NAME code/x87_refused COMMAND ${check} x87_refused ${CMAKE_CXX_COMPILER} ${PROJECT_SOURCE_DIR})
endif()
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
  add_test(NAME code/two_lanes COMMAND ${check} two_lanes ${CMAKE_OBJDUMP} $<TARGET_FILE:tessarn>)
endif()
