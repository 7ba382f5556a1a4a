# Rooms of the library: objects, compiled against their own include directory and those of the rooms below, so that an
# include against the layering does not compile. Without run-time type information throughout; with exceptions, for memory
# that cannot be had.

# A pure room: nothing of the platform is found from it.
function(quill_pure_room name)
  add_library(quill_${name} OBJECT ${ARGN})
  target_include_directories(quill_${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(quill_${name} PRIVATE quill_warnings)
  target_compile_options(quill_${name} PRIVATE -fno-rtti -fexceptions)
  quill_count_coverage(quill_${name})
endfunction()

function(quill_library_room name)
  quill_pure_room(${name} ${ARGN})
  target_include_directories(quill_${name} SYSTEM PRIVATE
    $<TARGET_PROPERTY:quill_platform_headers,INTERFACE_INCLUDE_DIRECTORIES>)
  target_link_libraries(quill_${name} PUBLIC android_base)
endfunction()
