# SPDX-License-Identifier: MIT
# Shared by the toolchain files of the Windows programs, which set CMAKE_SYSTEM_PROCESSOR first.
set(CMAKE_SYSTEM_NAME Windows)
set(mingw ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32)
set(CMAKE_C_COMPILER ${mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${mingw}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Links the runtime statically: the program needs no other files.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)
# The tests run under Wine.
get_filename_component(CMAKE_CROSSCOMPILING_EMULATOR
  "${CMAKE_CURRENT_LIST_DIR}/../scripts/run_windows_program" ABSOLUTE)
