# One set of sanitizers for library, stand-in and tests alike: a half-instrumented process reports
# false races and misses real overflows.
if(QUILL_SANITIZE)
  add_compile_options(-fsanitize=${QUILL_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QUILL_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 loses track of initialisation under instrumentation and reports its own <regex>.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
  if(QUILL_SANITIZE MATCHES "undefined")
    # The vptr check needs run-time type information, which the library is built without.
    add_compile_options(-fno-sanitize=vptr -fno-sanitize-recover=undefined)
  endif()
endif()
