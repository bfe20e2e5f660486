# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Run by cpack on each package that it has made. cpack takes the order of the files and the size of
# the folders from the file system, and their permissions from the umask: packed again, without any
# of that, where SOURCE_DATE_EPOCH says that the same bytes are wanted everywhere.

if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  return()
endif()

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(tree "${package}.tree")
  file(REMOVE_RECURSE "${tree}")
  file(MAKE_DIRECTORY "${tree}")
  if(CPACK_GENERATOR STREQUAL "DEB")
    run(dpkg-deb --raw-extract "${package}" "${tree}")
    run(chmod -R u=rwX,go=rX "${tree}")
    # In KiB, each file's rounded up; a folder is one.
    file(GLOB_RECURSE entries LIST_DIRECTORIES true "${tree}/usr/*")
    set(kilobytes 1)
    foreach(entry IN LISTS entries)
      set(bytes 1)
      if(NOT IS_DIRECTORY "${entry}")
        file(SIZE "${entry}" bytes)
      endif()
      math(EXPR kilobytes "${kilobytes} + (${bytes} + 1023) / 1024")
    endforeach()
    run(sed -i "s/^Installed-Size:.*/Installed-Size: ${kilobytes}/" "${tree}/DEBIAN/control")
    run(dpkg-deb --root-owner-group -Zxz --build "${tree}" "${package}")
  elseif(CPACK_GENERATOR STREQUAL "TGZ")
    run(tar -xpzf "${package}" -C "${tree}")
    run(chmod -R u=rwX,go=rX "${tree}")
    run(tar -C "${tree}" --sort=name --mtime=@$ENV{SOURCE_DATE_EPOCH} --owner=root:0 --group=root:0
        -cf "${package}.tar" "${CPACK_PACKAGE_FILE_NAME}")
    run(gzip -9nf "${package}.tar")
    file(RENAME "${package}.tar.gz" "${package}")
  endif()
  file(REMOVE_RECURSE "${tree}")
endforeach()
