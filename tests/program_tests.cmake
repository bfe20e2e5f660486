# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# The built program, driven from outside by real keys on a virtual display of its own.

find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(quorvane_program_test suffix library_path)
  foreach(case IN LISTS ARGN)
    quorvane_add_test(NAME program_${case}${suffix} LIBRARY_PATH "${library_path}"
                      COMMAND ${virtual_display} ${Python3_EXECUTABLE}
                              ${CMAKE_CURRENT_SOURCE_DIR}/program_test.py
                              $<TARGET_FILE:quorvane> Program.test_${case})
  endforeach()
endfunction()

quorvane_program_test("" "" first_start video_modes game_upload_and_playback ways_out
                      nothing_but_pictures failing_starts)
if(QUORVANE_COMPAT_SDL)
  quorvane_program_test(_compat ${QUORVANE_COMPAT_SDL} video_modes game_upload_and_playback)
endif()
