# SPDX-License-Identifier: MIT
# certbridge_warnings: the warning flags; linked by every target of this project.
add_library(certbridge_warnings INTERFACE)
if(MSVC)
  target_compile_options(certbridge_warnings INTERFACE /W4 /utf-8
    $<$<BOOL:${CERTBRIDGE_DEVELOPER}>:/WX>)
else()
  target_compile_options(certbridge_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-align -Wcast-qual
    -Wundef -Wvla -Wformat=2 -Wno-format-nonliteral
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
      -Wzero-as-null-pointer-constant -Wextra-semi>
    $<$<BOOL:${CERTBRIDGE_DEVELOPER}>:-Werror>)
endif()
