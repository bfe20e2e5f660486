# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Drawing, menus and shell against a recorder that takes the place of OpenGL, SDL, the audio player
# and the uploader: its definitions come before the libraries'.

add_executable(shell_tests
  animation_test.cpp
  font_test.cpp
  gfx_test.cpp
  gui_test.cpp
  menu_test.cpp
  recorder.cpp
  settings_test.cpp
  shell_test.cpp
  starfield_test.cpp
  texture_test.cpp)
target_link_libraries(shell_tests PRIVATE quorvane_program GTest::gtest_main)
gtest_discover_tests(shell_tests DISCOVERY_TIMEOUT 60)

# The same with memory that runs out. A program of its own: the allocator is the linker's business.
add_executable(allocation_tests allocation_test.cpp recorder.cpp)
target_link_libraries(allocation_tests PRIVATE quorvane_program GTest::gtest_main)
target_link_options(allocation_tests PRIVATE -Wl,--wrap=malloc,--wrap=calloc,--wrap=realloc,--wrap=free)
gtest_discover_tests(allocation_tests WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
                     DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 900)
