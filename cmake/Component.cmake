# Libraries beside the core. The folder components/NAME holds one: its header in include, its sources and
# exports.txt in src, its tests. It is linked as kestu::NAME, installed as lib(kestu_NAME) with a
# description for pkg-config, kestu-NAME, and found by find_package(kestu COMPONENTS NAME).
include(${CMAKE_CURRENT_LIST_DIR}/VersionScript.cmake)

# kestu_set_up_component(TARGET NAME): what all such libraries have in common.
function(kestu_set_up_component target name)
  add_library(kestu::${name} ALIAS ${target})
  set(folder ${CMAKE_CURRENT_SOURCE_DIR})
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${folder}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${folder}/src ${PROJECT_SOURCE_DIR}/src)
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:kestu_options>)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON LINKER_LANGUAGE C EXPORT_NAME ${name}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(BUILD_SHARED_LIBS)
    set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    kestu_write_version_script(${map} ${folder}/src/exports.txt)
    target_link_options(${target} PRIVATE
      -Wl,--as-needed -Wl,--version-script=${map} -Wl,--no-undefined-version -Wl,-Bsymbolic)
    if(NOT KESTU_SANITIZE)
      target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
    set_property(TARGET ${target} PROPERTY LINK_DEPENDS ${map})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${folder}/src/exports.txt)
  endif()
endfunction()

# kestu_install_component(TARGET NAME DESCRIPTION REQUIRES...): the library is in the component NAME of an
# installation, all that is needed to link it in NAME-development. REQUIRES are the names that pkg-config
# has for what it stands on; an archive brings them along.
function(kestu_install_component target name description)
  if(NOT KESTU_INSTALL)
    return()
  endif()
  install(TARGETS ${target} EXPORT kestu-${name}-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT ${name} NAMELINK_COMPONENT ${name}-development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${name}-development)
  install(EXPORT kestu-${name}-targets NAMESPACE kestu::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kestu COMPONENT ${name}-development)
  install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT ${name}-development FILES_MATCHING PATTERN "*.h")
  set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH prefix_from_pc /prefix/${pc_dir} /prefix)
  list(JOIN ARGN " " requires)
  set(visible "kestu = ${PROJECT_VERSION}")
  set(hidden ${requires})
  if(NOT BUILD_SHARED_LIBS)
    string(APPEND visible " ${requires}")
    set(hidden "")
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/component.pc.in kestu-${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kestu-${name}.pc
    DESTINATION ${pc_dir} COMPONENT ${name}-development)
endfunction()
