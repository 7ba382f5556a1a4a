# Target `tidy`: clang-tidy with the tree's .clang-tidy over everything that is compiled here. Minutes long, so no part
# of any build or test. For builds without sanitizers: theirs have g++ options that clang does not know.
find_program(QUILL_RUN_CLANG_TIDY run-clang-tidy)
if(QUILL_RUN_CLANG_TIDY)
  add_custom_target(tidy
    COMMAND ${QUILL_RUN_CLANG_TIDY} -quiet -p ${CMAKE_BINARY_DIR}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} USES_TERMINAL VERBATIM)
else()
  add_custom_target(tidy
    COMMAND ${CMAKE_COMMAND} -E echo "tidy needs run-clang-tidy (Debian package clang-tidy)"
    COMMAND ${CMAKE_COMMAND} -E false VERBATIM)
endif()
