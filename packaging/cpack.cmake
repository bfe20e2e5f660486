# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# What cpack makes: a Debian package (-G DEB), and a tar archive of the installation tree (-G TGZ)
# that runs from wherever it is unpacked. packaging/build makes both, reproducibly.

set(CPACK_PACKAGE_NAME quorvane)
set(CPACK_PACKAGE_VENDOR "${QUORVANE_DEVELOPER}")
set(CPACK_PACKAGE_CONTACT "${QUORVANE_DEVELOPER} <${QUORVANE_CONTACT}>")
set(CPACK_PACKAGE_HOMEPAGE_URL "${QUORVANE_HOMEPAGE}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "arcade shooter around a black hole")
set(CPACK_PACKAGE_DESCRIPTION
"A ship circles a black hole in a field that shrinks every fifteen seconds.
Its shield is blue or red and swallows shots of its own colour; shots of the
other colour end the game. Waves of both colours weave in, every shot bends
around the hole, and chains of one colour pay.

Every game is recorded and plays back exactly. The program quorvane-replay
tells whether a recording earns the score that it claims.")
set(CPACK_RESOURCE_FILE_LICENSE "${CMAKE_SOURCE_DIR}/LICENSES/MIT.txt")
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 1)  # several would let the compressed bytes depend on the machine
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ
    GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_FILE_NAME "quorvane-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR}")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libgl1-mesa-dri, x11-xserver-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "ffmpeg")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# What Debian wants and other systems do not: compressed manuals, a changelog of its own.
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/same_bytes.cmake")
set(CPACK_QUORVANE_RELEASE_DATE "${QUORVANE_RELEASE_DATE}")

include(CPack)
