# Where the library, its headers, the program and the two package descriptions go.
include(CMakePackageConfigHelpers)

install(TARGETS kestu EXPORT kestu-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS kestu_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/kestu_version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# The description finds its prefix from its own place, so that an installation may be moved.
set(kestu_pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH kestu_prefix_from_pc /prefix/${kestu_pc_dir} /prefix)
configure_file(cmake/kestu.pc.in kestu.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kestu.pc DESTINATION ${kestu_pc_dir})

set(kestu_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kestu)
install(EXPORT kestu-targets NAMESPACE kestu:: DESTINATION ${kestu_package_dir})
configure_package_config_file(cmake/kestu-config.cmake.in kestu-config.cmake
  INSTALL_DESTINATION ${kestu_package_dir})
write_basic_package_version_file(kestu-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/kestu-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/kestu-config-version.cmake
  DESTINATION ${kestu_package_dir})
