# The platform's own code that Debian ships: reference counting, containers, log, JNI helpers.
find_path(ANDROID_BASE_INCLUDE_DIR utils/RefBase.h PATH_SUFFIXES android REQUIRED)
foreach(lib utils cutils log nativehelper)
  find_library(ANDROID_${lib}_LIBRARY ${lib} PATH_SUFFIXES android REQUIRED)
endforeach()
get_filename_component(ANDROID_BASE_LIBRARY_DIR ${ANDROID_utils_LIBRARY} DIRECTORY)

# nativehelper's jni.h comes first: mixed with a JDK's jni.h in one unit it does not compile.
add_library(android_base INTERFACE)
target_include_directories(android_base SYSTEM INTERFACE
  ${ANDROID_BASE_INCLUDE_DIR}/nativehelper ${ANDROID_BASE_INCLUDE_DIR})
target_link_libraries(android_base INTERFACE
  ${ANDROID_utils_LIBRARY} ${ANDROID_cutils_LIBRARY} ${ANDROID_log_LIBRARY} ${ANDROID_nativehelper_LIBRARY})
# Debian keeps these libraries in a folder of their own that the loader does not search.
set(CMAKE_BUILD_RPATH ${ANDROID_BASE_LIBRARY_DIR})
set(CMAKE_INSTALL_RPATH ${ANDROID_BASE_LIBRARY_DIR})

if(CMAKE_CROSSCOMPILING)
  # Needed by every program although none calls it: once loaded it is what libbacktrace, behind libutils, finds.
  add_library(quill_7z SHARED ${PROJECT_SOURCE_DIR}/cmake/toolchains/SevenZip.c)
  set_target_properties(quill_7z PROPERTIES PREFIX "" OUTPUT_NAME 7z)
  target_link_options(android_base INTERFACE LINKER:--no-as-needed)
  target_link_libraries(android_base INTERFACE quill_7z)
endif()
