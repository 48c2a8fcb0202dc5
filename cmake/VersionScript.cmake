# A room's exports.txt names what it exports, one name a line; '#' begins a comment. Behind a name may
# stand the version of the interface that added it (@1.1), and "replaceable": the library calls a
# function of that name which a program puts before its own. Its definition is [[gnu::noinline]], for
# optimisation at link time does not ask the linker.

# kestu_write_version_script(OUTPUT LIST...): the linker's version script, a node for each version of
# the interface, under which the names are exported.
function(kestu_write_version_script output)
  set(version_1_0 "")
  set(version_1_1 "")
  foreach(list ${ARGN})
    file(STRINGS ${list} lines REGEX "^[A-Za-z_]")
    foreach(line ${lines})
      string(REGEX MATCH "^[A-Za-z_0-9]+" name ${line})
      if(line MATCHES "@1\\.1")
        string(APPEND version_1_1 "    ${name};\n")
      else()
        string(APPEND version_1_0 "    ${name};\n")
      endif()
    endforeach()
  endforeach()
  if(version_1_0) # which a library that came later does not have
    string(PREPEND version_1_0 "  global:\n")
  endif()
  file(CONFIGURE OUTPUT ${output} CONTENT
    "KESTU_1.0 {\n${version_1_0}  local:\n    *;\n};\nKESTU_1.1 {\n  global:\n${version_1_1}} KESTU_1.0;\n")
endfunction()

# kestu_write_replaceable(OUTPUT LIST...): the linker's list of functions that programs may replace.
# Calls of all others stay inside the library.
function(kestu_write_replaceable output)
  set(names "")
  foreach(list ${ARGN})
    file(STRINGS ${list} lines REGEX "^[A-Za-z_].* replaceable")
    foreach(line ${lines})
      string(REGEX MATCH "^[A-Za-z_0-9]+" name ${line})
      string(APPEND names "  ${name};\n")
    endforeach()
  endforeach()
  file(CONFIGURE OUTPUT ${output} CONTENT "{\n${names}};\n")
endfunction()
