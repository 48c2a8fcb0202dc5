# What is installed where, in the components runtime, development, program and documentation.
#
# A library beside the core (Component.cmake) has an export of its own, kestu-NAME-targets, in a component
# of its own, which find_package(kestu COMPONENTS NAME) finds.
include(CMakePackageConfigHelpers)

set(kestu_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kestu)
install(TARGETS kestu EXPORT kestu-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(EXPORT kestu-targets NAMESPACE kestu::
  DESTINATION ${kestu_package_dir} COMPONENT development)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/kestu_version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# The debugger looks for its printers beside the library, or below /usr/share, which it trusts.
if(BUILD_SHARED_LIBS)
  set(kestu_gdb_dir ${CMAKE_INSTALL_LIBDIR})
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(kestu_gdb_dir ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR})
  endif()
  install(FILES packaging/gdb/kestu_gdb.py RENAME libkestu.so.${PROJECT_VERSION}-gdb.py
    DESTINATION ${kestu_gdb_dir} COMPONENT development)
endif()

if(KESTU_BUILD_PROGRAM)
  # The program finds the library from its own place, so that an installation may be moved.
  file(RELATIVE_PATH lib_from_bin /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
  set_target_properties(kestu_program PROPERTIES
    EXPORT_NAME program INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
  install(TARGETS kestu_program EXPORT kestu-program-targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  install(EXPORT kestu-program-targets NAMESPACE kestu::
    DESTINATION ${kestu_package_dir} COMPONENT program)
  foreach(completion
      bash:${CMAKE_INSTALL_DATADIR}/bash-completion/completions:kestu
      zsh:${KESTU_ZSH_COMPLETIONS}:_kestu
      fish:${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d:kestu.fish)
    string(REGEX MATCH "(.*):(.*):(.*)" unused ${completion})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tools/kestu/kestu.${CMAKE_MATCH_1}
      DESTINATION ${CMAKE_MATCH_2} RENAME ${CMAKE_MATCH_3} COMPONENT program)
  endforeach()
endif()

# So do the descriptions for other builds. An archive brings along what it needs in any case.
set(kestu_pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH kestu_prefix_from_pc /prefix/${kestu_pc_dir} /prefix)
list(TRANSFORM KESTU_SYSTEM_LIBRARIES PREPEND -l OUTPUT_VARIABLE kestu_pc_libs)
list(JOIN kestu_pc_libs " " kestu_pc_libs)
if(NOT BUILD_SHARED_LIBS)
  set(kestu_pc_archive_requires " libtpl")
  set(kestu_pc_archive_libs " ${kestu_pc_libs}")
endif()
configure_file(cmake/kestu.pc.in kestu.pc @ONLY)
configure_package_config_file(cmake/kestu-config.cmake.in kestu-config.cmake
  INSTALL_DESTINATION ${kestu_package_dir})
write_basic_package_version_file(kestu-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kestu.pc
  DESTINATION ${kestu_pc_dir} COMPONENT development)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/kestu-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/kestu-config-version.cmake
  DESTINATION ${kestu_package_dir} COMPONENT development)

# Lists of what is linked, for those who look for versions with known faults.
include(cmake/Sbom.cmake)
set(kestu_sbom_dir ${CMAKE_INSTALL_DATADIR}/sbom)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/libkestu.cdx.json
  DESTINATION ${kestu_sbom_dir} COMPONENT runtime)
if(KESTU_BUILD_EDIT)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/libkestu_edit.cdx.json
    DESTINATION ${kestu_sbom_dir} COMPONENT edit)
endif()
if(KESTU_BUILD_TIFF)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/libkestu_tiff.cdx.json
    DESTINATION ${kestu_sbom_dir} COMPONENT tiff)
endif()
if(KESTU_BUILD_PROGRAM)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kestu.cdx.json
    DESTINATION ${kestu_sbom_dir} COMPONENT program)
endif()

# Manual pages, where there is Python to make them: of the program what it prints as help, of the
# library what its headers say.
find_program(KESTU_PYTHON python3)
if(KESTU_PYTHON AND KESTU_BUILD_PROGRAM AND NOT CMAKE_CROSSCOMPILING)
  set(kestu_man_dir ${CMAKE_CURRENT_BINARY_DIR}/man)
  file(GLOB kestu_man_sources CONFIGURE_DEPENDS
    include/kestu_*.h components/*/include/*.h packaging/man/*)
  add_custom_command(OUTPUT ${kestu_man_dir}/made
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${kestu_man_dir}
    COMMAND ${KESTU_PYTHON} scripts/man ${kestu_man_dir} $<TARGET_FILE:kestu_program>
    COMMAND ${CMAKE_COMMAND} -E touch ${kestu_man_dir}/made
    DEPENDS kestu_program scripts/man ${kestu_man_sources}
    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} VERBATIM)
  add_custom_target(kestu_man ALL DEPENDS ${kestu_man_dir}/made)
  install(DIRECTORY ${kestu_man_dir}/man3 DESTINATION ${CMAKE_INSTALL_MANDIR}
    COMPONENT development OPTIONAL)
  foreach(component edit tiff)
    install(DIRECTORY ${kestu_man_dir}/${component}/man3 DESTINATION ${CMAKE_INSTALL_MANDIR}
      COMPONENT ${component}-development OPTIONAL)
  endforeach()
  install(DIRECTORY ${kestu_man_dir}/man1 ${kestu_man_dir}/man5 DESTINATION ${CMAKE_INSTALL_MANDIR}
    COMPONENT program OPTIONAL)
endif()

install(FILES README.md CHANGELOG.md SECURITY.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  PATTERN CMakeLists.txt EXCLUDE)

if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_SOURCE_DIR}/cmake/Uninstall.cmake
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} VERBATIM)
endif()
