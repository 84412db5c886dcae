# SPDX-License-Identifier: MIT
# With CERTBRIDGE_ASSERTIONS, VEXIL_ASSERT checks its condition; without it, the condition is only
# compiled. The definition is the same for all code of one build, since headers use the macro.
if(CERTBRIDGE_ASSERTIONS)
  add_compile_definitions(VEXIL_ASSERTIONS)
endif()
