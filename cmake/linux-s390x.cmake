# SPDX-License-Identifier: MIT
# IBM Z, a big-endian processor, under user emulation.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(loader ld64.so.1)
include("${CMAKE_CURRENT_LIST_DIR}/linux-common.cmake")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x)
