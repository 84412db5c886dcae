# SPDX-License-Identifier: MIT
# Shared by the toolchain files for other processors under Linux, which set CMAKE_SYSTEM_PROCESSOR and
# loader, the file name of the dynamic loader, first.
set(CMAKE_SYSTEM_NAME Linux)
set(triplet ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_FIND_ROOT_PATH /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The programs find the loader and the libraries of the cross compiler, so the emulator needs no
# directory that hides the file system from them.
set(libraries /usr/${triplet}/lib)
string(CONCAT CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,--dynamic-linker=${libraries}/${loader} -Wl,--disable-new-dtags -Wl,-rpath,${libraries}")
