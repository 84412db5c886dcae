# With CERTBRIDGE_SANITIZE everything is built with the sanitizers; the first finding ends the run.
if(CERTBRIDGE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=address,undefined)
endif()
