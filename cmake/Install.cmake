# What `cmake --install` puts where a Linux distribution expects it. Everything finds its own by the way from one folder to
# another, so an installation can be moved.
set(data ${CMAKE_INSTALL_DATADIR}/quill)
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/quillheifwriter)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/quillheifwriter)

set_target_properties(quillheifwriter quillplatform PROPERTIES INSTALL_RPATH "$ORIGIN;${ANDROID_BASE_LIBRARY_DIR}")
install(TARGETS quillheifwriter quillplatform LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY host/devices DESTINATION ${data})

# For programs that stand on the library: its class, and the platform's headers.
install(FILES writer/QuillHeifWriter.h encoder/frame/Frame.h DESTINATION ${headers})
install(DIRECTORY host/include/ DESTINATION ${headers}/platform)
include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/install/quillheifwriterConfig.cmake.in quillheifwriterConfig.cmake
  INSTALL_DESTINATION ${package} PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(quillheifwriterConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/quillheifwriterConfig.cmake ${CMAKE_BINARY_DIR}/quillheifwriterConfigVersion.cmake
  DESTINATION ${package})
file(RELATIVE_PATH prefix_from_package ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/install/quillheifwriter.pc.in quillheifwriter.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/quillheifwriter.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(NOT CMAKE_CROSSCOMPILING)
  install(TARGETS quill RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${quill_jar_file} ${quill_media_jar_file} ${quill_android_jar_file}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/java/quill)
  install(FILES ${CMAKE_BINARY_DIR}/java/quill.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${CMAKE_BINARY_DIR}/java/quill.bash RENAME quill
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${CMAKE_BINARY_DIR}/java/_quill DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES docs/bulk.md docs/inspect.md docs/pictures.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quill)
endif()
if(TARGET quill_classes)
  install(FILES ${CMAKE_BINARY_DIR}/lib/quill/classes.list DESTINATION ${CMAKE_INSTALL_LIBDIR}/quill)
endif()
configure_file(cmake/install/Finish.cmake.in Finish.cmake @ONLY)
install(SCRIPT ${CMAKE_BINARY_DIR}/Finish.cmake)
