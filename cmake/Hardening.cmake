# certbridge_hardening: the interface target linked by what is shipped.
add_library(certbridge_hardening INTERFACE)
if(WIN32)
  target_link_options(certbridge_hardening INTERFACE -Wl,--nxcompat -Wl,--dynamicbase)
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
