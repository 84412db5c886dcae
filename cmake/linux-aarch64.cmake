# SPDX-License-Identifier: MIT
# 64-bit ARM under user emulation.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(loader ld-linux-aarch64.so.1)
include("${CMAKE_CURRENT_LIST_DIR}/linux-common.cmake")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
