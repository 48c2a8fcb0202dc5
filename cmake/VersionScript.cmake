# kestu_write_version_script(OUTPUT LIST...): writes the linker version script that exports, under
# the version node KESTU_1.0, the names in the lists (one name a line, '#' begins a comment).
function(kestu_write_version_script output)
  set(names "")
  foreach(list ${ARGN})
    file(STRINGS ${list} lines REGEX "^[A-Za-z_]")
    foreach(name ${lines})
      string(APPEND names "    ${name};\n")
    endforeach()
  endforeach()
  file(CONFIGURE OUTPUT ${output} CONTENT "KESTU_1.0 {\n  global:\n${names}  local:\n    *;\n};\n")
endfunction()
