# Both compilers are clean under these; code of others comes in as system includes.
add_library(quill_warnings INTERFACE)
target_compile_options(quill_warnings INTERFACE -Wall -Wextra -Werror)
