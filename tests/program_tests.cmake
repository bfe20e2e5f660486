# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# The built program, driven from outside by real keys on a virtual display of its own. What is labelled
# "long" is left out by `check quick`: all but these, and all on the second SDL.
set(quick_cases first_start ways_out keys starts full_disk display_without_gl refused_mode pipe)

# quorvane_outside_tests(KIND CLASS SUFFIX LIBRARY_PATH CASE...): the cases of KIND_test.py
function(quorvane_outside_tests kind class suffix library_path)
  foreach(case IN LISTS ARGN)
    quorvane_add_test(NAME ${kind}_${case}${suffix} LIBRARY_PATH "${library_path}"
                      COMMAND ${virtual_display} ${python}
                              ${CMAKE_CURRENT_SOURCE_DIR}/${kind}_test.py
                              $<TARGET_FILE:quorvane> ${class}.test_${case})
    if(suffix OR NOT case IN_LIST quick_cases)
      set_property(TEST ${kind}_${case}${suffix} PROPERTY LABELS long)
    endif()
  endforeach()
endfunction()

add_library(fake_clock MODULE fake_clock.cpp)  # preloaded, found beside the program
target_link_libraries(fake_clock PRIVATE ${CMAKE_DL_LIBS})
add_library(owned_clock MODULE owned_clock.cpp)  # likewise
target_link_libraries(owned_clock PRIVATE quorvane_options ${CMAKE_DL_LIBS})

set(program_cases first_start video_modes game_upload_and_playback ways_out every_screen_ends names
                  deaths_by_flying deaths_in_battle keys answers bad_recordings sounds)
set(fault_cases starts pictures sounds music no_audio_device full_disk unwritable_places clocks
                display_without_gl lost_display pipe)
quorvane_outside_tests(program Program "" "" ${program_cases})
quorvane_outside_tests(fault Faults "" "" ${fault_cases} no_audio_driver refused_mode)
if(QUORVANE_COMPAT_SDL AND QUORVANE_SANITIZE)  # it is slow, and the release build has them all
  set(program_cases video_modes game_upload_and_playback every_screen_ends keys)
  set(fault_cases starts pictures no_audio_device display_without_gl)
endif()
if(QUORVANE_COMPAT_SDL)
  quorvane_outside_tests(program Program _compat ${QUORVANE_COMPAT_SDL} ${program_cases})
  quorvane_outside_tests(fault Faults _compat ${QUORVANE_COMPAT_SDL} ${fault_cases})
endif()

if(NOT QUORVANE_SANITIZE)
  quorvane_add_test(NAME soak COMMAND ${CMAKE_SOURCE_DIR}/tools/virtual-display 640x480 ${python}
                                      ${CMAKE_CURRENT_SOURCE_DIR}/soak ${CMAKE_BINARY_DIR} 1)
  set_property(TEST soak PROPERTY LABELS long)
endif()
