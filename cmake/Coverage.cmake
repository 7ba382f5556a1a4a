# Counters in the library's rooms (quill_library_room), not in the stand-in or the tests: those run as fast as ever, and
# what is counted is what is shipped. Atomic, because the looper counts beside the caller.
option(QUILL_COVERAGE "Count which lines and branches of the library run" OFF)
if(QUILL_COVERAGE)
  # Child processes of tests leave past the exit handlers and write their counters by this function.
  add_link_options(--coverage -Wl,-u,__gcov_dump)
endif()

function(quill_count_coverage target)
  if(QUILL_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -O0 -fprofile-update=atomic)
  endif()
endfunction()
