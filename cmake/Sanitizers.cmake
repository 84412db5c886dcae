# With CERTBRIDGE_SANITIZE everything is built with the sanitizers; the first finding ends the run.
# With CERTBRIDGE_FUZZ as well, and the fuzzer sees where each input goes.
if(CERTBRIDGE_SANITIZE OR CERTBRIDGE_FUZZ)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=address,undefined)
endif()
if(CERTBRIDGE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
