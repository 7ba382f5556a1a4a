# Every C++ test case under memcheck: a process each, so that a report stands with the case that it belongs to. Programs
# that a test starts (readers of others, mostly) run without.
option(QUILL_VALGRIND "Run the C++ tests under valgrind's memcheck" OFF)

# How much slower than usual a processor is that is watched or emulated: waits and limits of the tests are stretched as
# much.
set(QUILL_SLOWNESS 1)
if(QUILL_SANITIZE)
  set(QUILL_SLOWNESS 5)
elseif(QUILL_VALGRIND OR CMAKE_CROSSCOMPILING)
  set(QUILL_SLOWNESS 40)
endif()

# What stands before the command of a test.
set(QUILL_TEST_LAUNCHER /usr/bin/env QUILL_CLOCK_STRETCH=${QUILL_SLOWNESS})
if(QUILL_SANITIZE OR QUILL_VALGRIND)
  list(APPEND QUILL_TEST_LAUNCHER QUILL_WATCHED=1)
endif()
if(QUILL_SLOWNESS GREATER 5)  # x265 is not what is looked at
  list(APPEND QUILL_TEST_LAUNCHER QUILL_PROPERTIES=debug.quill.host.x265.preset=ultrafast)
endif()
if(QUILL_VALGRIND)
  find_program(QUILL_VALGRIND_PROGRAM valgrind REQUIRED)
  list(APPEND QUILL_TEST_LAUNCHER
    ${QUILL_VALGRIND_PROGRAM} --quiet --error-exitcode=99 --num-callers=25 --fair-sched=yes
    --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite
    --soname-synonyms=somalloc=nouserintercepts # a test replaces the allocation functions
    --suppressions=${PROJECT_SOURCE_DIR}/tests/sanitizers/valgrind.supp)
endif()
list(APPEND QUILL_TEST_LAUNCHER ${CMAKE_CROSSCOMPILING_EMULATOR})
