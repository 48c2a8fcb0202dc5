# kestu_write_sbom(OUTPUT NAME TYPE PARTS...): a CycloneDX list of what NAME is linked with or includes. A
# part is "name|version|names of its shared libraries", the last empty for headers.
function(kestu_write_sbom output name type)
  set(components "")
  set(references "")
  foreach(part ${ARGN})
    string(REGEX MATCH "^([^|]*)\\|([^|]*)\\|(.*)$" matched "${part}")
    set(part_name ${CMAKE_MATCH_1})
    set(part_version ${CMAKE_MATCH_2})
    set(properties "")
    string(REPLACE " " ";" sonames "${CMAKE_MATCH_3}")
    foreach(soname ${sonames})
      list(APPEND properties "{\"name\": \"soname\", \"value\": \"${soname}\"}")
    endforeach()
    list(JOIN properties ", " properties)
    list(APPEND references "\"${part_name}\"")
    list(APPEND components "    {
      \"type\": \"library\",
      \"bom-ref\": \"${part_name}\",
      \"name\": \"${part_name}\",
      \"version\": \"${part_version}\",
      \"properties\": [${properties}]
    }")
  endforeach()
  list(JOIN components ",\n" components)
  list(JOIN references ", " references)
  file(CONFIGURE OUTPUT ${output} CONTENT "{
  \"bomFormat\": \"CycloneDX\",
  \"specVersion\": \"1.5\",
  \"version\": 1,
  \"metadata\": {
    \"component\": {
      \"type\": \"${type}\",
      \"bom-ref\": \"${name}\",
      \"name\": \"${name}\",
      \"version\": \"${PROJECT_VERSION}\"
    }
  },
  \"components\": [
${components}
  ],
  \"dependencies\": [
    {\"ref\": \"${name}\", \"dependsOn\": [${references}]}
  ]
}
")
endfunction()

# kestu_read_version(OUT FILE REGEX): the version that a header states.
function(kestu_read_version out file regex)
  file(STRINGS ${file} line REGEX "${regex}" LIMIT_COUNT 1)
  string(REGEX MATCH "[0-9]+[0-9.]*[ ]*$" version "${line}")
  string(STRIP "${version}" version)
  set(${out} "${version}" PARENT_SCOPE)
endfunction()

kestu_read_version(uthash_version ${UTHASH_INCLUDE_DIR}/uthash.h "define UTHASH_VERSION")
find_path(libc_header features.h REQUIRED)
kestu_read_version(libc_major ${libc_header}/features.h "define[ \t]+__GLIBC__[ \t]")
kestu_read_version(libc_minor ${libc_header}/features.h "define[ \t]+__GLIBC_MINOR__[ \t]")
set(parts
  "apr|${APR_VERSION}|libapr-1.so.0"
  "tpl|${TPL_VERSION}|libtpl.so.0"
  "uthash|${uthash_version}|"
  "fast_float|${FastFloat_VERSION}|"
  "glibc|${libc_major}.${libc_minor}|libc.so.6 libm.so.6 ld-linux-x86-64.so.2")
kestu_write_sbom(${PROJECT_BINARY_DIR}/libkestu.cdx.json libkestu library ${parts})
if(KESTU_BUILD_EDIT)
  kestu_write_sbom(${PROJECT_BINARY_DIR}/libkestu_edit.cdx.json libkestu_edit library
    "libkestu|${PROJECT_VERSION}|libkestu.so.1"
    "apr|${APR_VERSION}|libapr-1.so.0"
    "utf8proc|${UTF8PROC_VERSION}|libutf8proc.so.2"
    "glibc|${libc_major}.${libc_minor}|libc.so.6 ld-linux-x86-64.so.2")
endif()
if(KESTU_BUILD_TIFF)
  kestu_write_sbom(${PROJECT_BINARY_DIR}/libkestu_tiff.cdx.json libkestu_tiff library
    "libkestu|${PROJECT_VERSION}|libkestu.so.1"
    "libtiff|${LIBTIFF_VERSION}|libtiff.so.6"
    "glibc|${libc_major}.${libc_minor}|libc.so.6 libm.so.6 ld-linux-x86-64.so.2")
endif()
if(KESTU_BUILD_PROGRAM)
  find_package(CLI11 CONFIG REQUIRED)
  find_package(nlohmann_json REQUIRED)
  list(APPEND parts
    "libkestu|${PROJECT_VERSION}|libkestu.so.1"
    "libkestu_edit|${PROJECT_VERSION}|libkestu_edit.so.1"
    "libkestu_tiff|${PROJECT_VERSION}|libkestu_tiff.so.1"
    "libpng|${LIBPNG_VERSION}|libpng16.so.16"
    "CLI11|${CLI11_VERSION}|"
    "nlohmann_json|${nlohmann_json_VERSION}|"
    "libstdc++|${CMAKE_CXX_COMPILER_VERSION}|libstdc++.so.6 libgcc_s.so.1")
  kestu_write_sbom(${PROJECT_BINARY_DIR}/kestu.cdx.json kestu application ${parts})
endif()
