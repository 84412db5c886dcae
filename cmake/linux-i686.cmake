# SPDX-License-Identifier: MIT
# 32-bit x86. The programs run without an emulator where the system permits it.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(loader ld-linux.so.2)
include("${CMAKE_CURRENT_LIST_DIR}/linux-common.cmake")
execute_process(COMMAND ${libraries}/${loader} --version
  RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
if(NOT status EQUAL 0)
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386)
endif()
