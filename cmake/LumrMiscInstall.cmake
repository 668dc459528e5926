# What `cmake --install` lays down: headers, library, package files, tool, manual, completions.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS lumrmisc EXPORT LumrMiscTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY lumrmisc/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lumrmisc
  FILES_MATCHING PATTERN "*.h"
  PATTERN "*_internal.h" EXCLUDE
  PATTERN "tables" EXCLUDE
  PATTERN "posix" EXCLUDE
  PATTERN "windows" EXCLUDE)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/LumrMisc)
install(EXPORT LumrMiscTargets NAMESPACE LumrMisc:: DESTINATION ${package_dir})
configure_package_config_file(cmake/LumrMiscConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/LumrMiscConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/LumrMiscConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/LumrMiscConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/LumrMiscConfigVersion.cmake
  DESTINATION ${package_dir})

# Found from the place of the file, since --prefix of the installation may differ from the one
# that was configured.
file(RELATIVE_PATH prefix_from_package
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/lumrmisc.pc.in ${CMAKE_CURRENT_BINARY_DIR}/lumrmisc.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/lumrmisc.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(LUMRMISC_BUILD_TOOL)
  set(tool ${CMAKE_CURRENT_SOURCE_DIR}/tools/lumr)
  install(TARGETS lumr RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${tool}/lumr.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${tool}/completions/lumr.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME lumr)
  install(FILES ${tool}/completions/_lumr
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${tool}/completions/lumr.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
