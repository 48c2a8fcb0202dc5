# What is built, and how. Inside another project it is the library alone, and nothing of that project
# is changed.
include(CMakeDependentOption)

if(PROJECT_IS_TOP_LEVEL)
  include(CTest)
  option(BUILD_SHARED_LIBS "Build a shared library; OFF builds an archive" ON)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release or RelWithDebInfo" FORCE)
  endif()
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  set(CMAKE_BUILD_RPATH_USE_ORIGIN ON) # programs do not tell where they were built
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
  set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
elseif(NOT DEFINED BUILD_SHARED_LIBS)
  set(BUILD_SHARED_LIBS ON)
endif()

option(KESTU_BUILD_PROGRAM "Build the kestu program" ${PROJECT_IS_TOP_LEVEL})
option(KESTU_INSTALL "Install the library and what else is built" ${PROJECT_IS_TOP_LEVEL})
cmake_dependent_option(KESTU_BUILD_TESTS "Build the tests, and the fuzz targets as tests" ON
  "PROJECT_IS_TOP_LEVEL;BUILD_TESTING;KESTU_BUILD_PROGRAM" OFF)
cmake_dependent_option(KESTU_BUILD_EXAMPLES "Build the examples" ON
  "PROJECT_IS_TOP_LEVEL;BUILD_TESTING" OFF)
cmake_dependent_option(KESTU_BUILD_BENCH "Build the benchmark programs" OFF
  PROJECT_IS_TOP_LEVEL OFF)
cmake_dependent_option(KESTU_BUILD_FUZZ "Build the libFuzzer targets (needs Clang)" OFF
  PROJECT_IS_TOP_LEVEL OFF)
# The program needs them; a build of the library alone asks for neither utf8proc nor libtiff.
if(KESTU_BUILD_PROGRAM OR KESTU_BUILD_BENCH OR KESTU_BUILD_FUZZ)
  set(kestu_wants_components ON)
else()
  set(kestu_wants_components OFF)
endif()
option(KESTU_BUILD_EDIT "Build libkestu_edit, the line editor" ${kestu_wants_components})
option(KESTU_BUILD_TIFF "Build libkestu_tiff, the reader of all TIFF files" ${kestu_wants_components})
option(KESTU_WERROR "Turn compiler warnings into errors, and missing packages too" OFF)
set(KESTU_ZSH_COMPLETIONS share/zsh/site-functions CACHE STRING "Where zsh looks for completions")
set(KESTU_FORTIFY 2 CACHE STRING "How closely the C library's functions are watched: 0 to 3")
set(KESTU_SANITIZE "" CACHE STRING "Sanitizers to build with: 'address,undefined' or 'thread'")

set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
