# SPDX-License-Identifier: MIT
# The 32-bit Windows program, cross-compiled with MinGW-w64 (POSIX threads).
set(CMAKE_SYSTEM_PROCESSOR i686)
include("${CMAKE_CURRENT_LIST_DIR}/windows-common.cmake")
