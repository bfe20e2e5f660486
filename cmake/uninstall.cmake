# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Removes the files of an installation's MANIFEST, and the folders that are empty without them.
# DESTDIR counts as it did for the installation. Players' own folders are not part of one.

if(NOT EXISTS "${MANIFEST}")
  message(FATAL_ERROR "There is no ${MANIFEST}: nothing has been installed from here")
endif()
file(STRINGS "${MANIFEST}" files)
set(folders "")
foreach(file IN LISTS files)
  set(file "$ENV{DESTDIR}${file}")
  if(EXISTS "${file}" OR IS_SYMLINK "${file}")
    message(STATUS "Removing ${file}")
    file(REMOVE "${file}")
  endif()
  cmake_path(GET file PARENT_PATH folder)
  list(APPEND folders "${folder}")
endforeach()

# Only folders named after the game are its own.
while(folders)
  list(POP_FRONT folders folder)
  if(folder MATCHES "/quorvane(/|$)" AND IS_DIRECTORY "${folder}")
    file(GLOB left LIST_DIRECTORIES true "${folder}/*" "${folder}/.*")
    if(NOT left)
      file(REMOVE_RECURSE "${folder}")
      cmake_path(GET folder PARENT_PATH parent)
      list(APPEND folders "${parent}")
    endif()
  endif()
endwhile()
