# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Run by cpack on the installed tree, before it becomes a Debian package.

if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
set(tree "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr")
set(doc "${tree}/share/doc/quorvane")

file(RENAME "${doc}/CHANGELOG.md" "${doc}/changelog")
execute_process(COMMAND date -R -u -d "${CPACK_QUORVANE_RELEASE_DATE}" OUTPUT_VARIABLE day
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
file(WRITE "${doc}/changelog.Debian"
"quorvane (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Made by the game's own build; changelog.gz has what changed in the game.

 -- ${CPACK_PACKAGE_CONTACT}  ${day}
")
file(GLOB_RECURSE pages "${tree}/share/man/*.[1-8]")
execute_process(COMMAND gzip -9n ${pages} "${doc}/changelog" "${doc}/changelog.Debian"
                COMMAND_ERROR_IS_FATAL ANY)
file(CHMOD "${doc}/changelog.gz" "${doc}/changelog.Debian.gz"
     PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# A game in /usr/games that comes with a tool for scoreboards in /usr/bin; no bug asked for it.
file(WRITE "${tree}/share/lintian/overrides/quorvane"
     "quorvane: package-section-games-but-has-usr-bin\n"
     "quorvane: initial-upload-closes-no-bugs\n")
