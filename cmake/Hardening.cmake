# SPDX-License-Identifier: MIT
# certbridge_hardening: the protections of the binaries; linked by all that is installed.
add_library(certbridge_hardening INTERFACE)
if(MSVC)
  target_link_options(certbridge_hardening INTERFACE /NXCOMPAT /DYNAMICBASE)
elseif(WIN32)
  target_compile_options(certbridge_hardening INTERFACE -fstack-protector-strong)
  # The option of the linker adds the library that the protected functions call.
  target_link_options(certbridge_hardening INTERFACE
    -fstack-protector-strong -Wl,--nxcompat -Wl,--dynamicbase)
else()
  target_compile_options(certbridge_hardening INTERFACE -fstack-protector-strong)
  if(NOT CERTBRIDGE_SANITIZE)
    target_compile_options(certbridge_hardening INTERFACE
      $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
  endif()
  target_link_options(certbridge_hardening INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES C CXX)
endif()
