# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# What has been built, installed, started as a player starts it, upgraded and removed.

set(cases metadata notices_go_with_every_copy links_in_documents installed_export
             ordinary_user_and_read_only_system upgrade what_the_player_has_put_there failures
             no_display screen_comes_back uninstall)
if(NOT QUORVANE_SANITIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  list(APPEND cases hardened_programs)
endif()
foreach(case IN LISTS cases)
  quorvane_add_test(NAME package.${case}
                    COMMAND ${virtual_display} ${python}
                            ${CMAKE_CURRENT_SOURCE_DIR}/package_test.py ${CMAKE_COMMAND}
                            ${CMAKE_BINARY_DIR} Package.test_${case})
endforeach()
if(QUORVANE_COMPAT_SDL)
  quorvane_add_test(NAME package.no_display_compat LIBRARY_PATH ${QUORVANE_COMPAT_SDL}
                    COMMAND ${virtual_display} ${python}
                            ${CMAKE_CURRENT_SOURCE_DIR}/package_test.py ${CMAKE_COMMAND}
                            ${CMAKE_BINARY_DIR} Package.test_no_display)
endif()
