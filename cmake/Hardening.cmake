# SPDX-License-Identifier: MIT
# certbridge_hardening: the protections of the binaries; linked by all that is installed.
# scripts/check-hardening verifies them.
include(CheckCXXCompilerFlag)
add_library(certbridge_hardening INTERFACE)

# The level of _FORTIFY_SOURCE, unless the builder has chosen one.
function(add_fortification)
  if(CERTBRIDGE_SANITIZE OR "$ENV{CXXFLAGS} ${CMAKE_CXX_FLAGS}" MATCHES "_FORTIFY_SOURCE")
    return()
  endif()
  set(level 2)
  if((CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12)
      OR CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    set(level 3)
  endif()
  target_compile_options(certbridge_hardening INTERFACE
    $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${level}>)
endfunction()

if(MSVC)
  target_link_options(certbridge_hardening INTERFACE /NXCOMPAT /DYNAMICBASE /LARGEADDRESSAWARE)
elseif(WIN32)
  target_compile_options(certbridge_hardening INTERFACE -fstack-protector-strong)
  # The option of the linker adds the library that the protected functions call.
  target_link_options(certbridge_hardening INTERFACE
    -fstack-protector-strong -Wl,--nxcompat -Wl,--dynamicbase)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    target_link_options(certbridge_hardening INTERFACE -Wl,--high-entropy-va)
  else()
    # Address space of 4 GiB instead of 2 GiB.
    target_link_options(certbridge_hardening INTERFACE -Wl,--large-address-aware)
  endif()
else()
  target_compile_options(certbridge_hardening INTERFACE -fstack-protector-strong)
  foreach(option stack-clash-protection cf-protection)
    check_cxx_compiler_flag(-f${option} HAS_${option})
    if(HAS_${option})
      target_compile_options(certbridge_hardening INTERFACE -f${option})
    endif()
  endforeach()
  add_fortification()
  target_link_options(certbridge_hardening INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES C CXX)
endif()
