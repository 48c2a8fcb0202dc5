# Removes what the installations from this build folder have put in place, and the folders that this
# leaves empty.
file(GLOB manifests install_manifest*.txt)
if(NOT manifests)
  message(FATAL_ERROR "nothing has been installed from this folder")
endif()

foreach(manifest ${manifests})
  file(STRINGS ${manifest} installed)
  foreach(file ${installed})
    set(path "$ENV{DESTDIR}${file}")
    file(REMOVE "${path}")
    cmake_path(GET path PARENT_PATH folder)
    while(folder MATCHES kestu) # shared ones stay
      file(GLOB rest "${folder}/*" "${folder}/.*")
      if(rest)
        break()
      endif()
      file(REMOVE_RECURSE "${folder}")
      cmake_path(GET folder PARENT_PATH folder)
    endwhile()
  endforeach()
  file(REMOVE ${manifest})
endforeach()
