# A room of the library: objects, compiled against the platform's include paths and the room below only, so
# that an include against the layering does not compile. Without run-time type information throughout.
function(quill_library_room name)
  add_library(quill_${name} OBJECT ${ARGN})
  target_include_directories(quill_${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_include_directories(quill_${name} SYSTEM PRIVATE
    $<TARGET_PROPERTY:quill_platform_headers,INTERFACE_INCLUDE_DIRECTORIES>)
  target_link_libraries(quill_${name} PUBLIC android_base PRIVATE quill_warnings)
  target_compile_options(quill_${name} PRIVATE -fno-rtti)
  quill_count_coverage(quill_${name})
endfunction()
