# Takes away what an installation put there:  cmake -P PREFIX/share/morvik/uninstall.cmake
# It goes by the list beside it. Folders that are left empty go too, but for those that belong to everybody: the prefix, and
# what is right below it (bin, include, lib, share).
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH prefix)
cmake_path(GET prefix PARENT_PATH prefix)
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/installed.txt files)

set(folders "")
foreach(file IN LISTS files)
  message(STATUS "Removing ${prefix}/${file}")
  file(REMOVE ${prefix}/${file})
  cmake_path(GET file PARENT_PATH folder)
  list(APPEND folders ${folder})
  if(file MATCHES "[.]py$")  # Python leaves its own beside it
    file(REMOVE_RECURSE ${prefix}/${folder}/__pycache__)
  endif()
endforeach()

list(REMOVE_DUPLICATES folders)
foreach(folder IN LISTS folders)
  while(folder MATCHES "/")
    file(GLOB rest LIST_DIRECTORIES true ${prefix}/${folder}/* ${prefix}/${folder}/.?*)
    list(FILTER rest EXCLUDE REGEX "/[.][.]$")
    if(rest)
      break()
    endif()
    file(REMOVE_RECURSE ${prefix}/${folder})
    cmake_path(GET folder PARENT_PATH folder)
  endwhile()
endforeach()
