# A plain build goes without the program and the tests where what they need is missing. The presets
# insist on both.
if(KESTU_WERROR)
  return()
endif()

if(KESTU_BUILD_PROGRAM)
  find_package(CLI11 CONFIG QUIET)
  find_package(nlohmann_json QUIET)
  if(NOT CLI11_FOUND OR NOT nlohmann_json_FOUND)
    message(NOTICE "kestu: without the program: it needs CLI11 and nlohmann_json (scripts/setup program)")
    set(KESTU_BUILD_PROGRAM OFF)
    set(KESTU_BUILD_TESTS OFF)
  endif()
endif()

if(KESTU_BUILD_TESTS)
  find_package(GTest QUIET)
  pkg_check_modules(TEST_PEERS QUIET libtiff-4)
  if(NOT GTest_FOUND OR NOT TEST_PEERS_FOUND)
    message(NOTICE "kestu: without the tests: they need more packages (scripts/setup test)")
    set(KESTU_BUILD_TESTS OFF)
  endif()
endif()
