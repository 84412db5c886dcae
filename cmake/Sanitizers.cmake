# SPDX-License-Identifier: MIT
# CERTBRIDGE_SANITIZE builds everything with the sanitizers; the first finding aborts the program.
# CERTBRIDGE_FUZZ adds the instrumentation that guides the fuzzer.
if(CERTBRIDGE_SANITIZE OR CERTBRIDGE_FUZZ)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=address,undefined)
endif()
if(CERTBRIDGE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
