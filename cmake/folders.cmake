# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Where things are installed. The programs find each other from where they are themselves, so that an
# installation can be moved as a whole.

include(GNUInstallDirs)
set(QUORVANE_GAMESDIR "${CMAKE_INSTALL_BINDIR}" CACHE STRING
    "Where the command quorvane goes, below the prefix")
set(QUORVANE_ASSETSDIR "${CMAKE_INSTALL_DATADIR}/quorvane" CACHE STRING
    "Where graphics, sounds and music go, below the prefix")
set(QUORVANE_PROGRAMDIR "${CMAKE_INSTALL_LIBEXECDIR}/quorvane")

# The way from one installed folder to another place.
function(quorvane_way_from folder path result)
  set(prefix "${CMAKE_INSTALL_PREFIX}")
  cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY "${prefix}")
  cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY "${prefix}")
  cmake_path(RELATIVE_PATH path BASE_DIRECTORY "${folder}")
  set(${result} "${path}" PARENT_SCOPE)
endfunction()
