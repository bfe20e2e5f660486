# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# The real libraries below the program: libcurl, SDL_mixer, and the GL on a virtual display.

# What libraries of others never free is no leak of ours: lsan.supp says which and why.
set(test_environment SDL_AUDIODRIVER=dummy)
if(QUORVANE_SANITIZE)
  add_library(keep_loaded SHARED keep_loaded.cpp)
  list(APPEND test_environment
       "LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/lsan.supp:print_suppressions=0"
       "ASAN_OPTIONS=verify_asan_link_order=0" "LD_PRELOAD=$<TARGET_FILE:keep_loaded>")
endif()

function(quorvane_service_test name)
  add_executable(${name} ${name}.cpp)
  target_link_libraries(${name} PRIVATE quorvane_program GTest::gtest_main)
endfunction()

# quorvane_add_test(NAME name [LIBRARY_PATH folder] COMMAND ...)
function(quorvane_add_test)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;LIBRARY_PATH" "COMMAND")
  add_test(NAME ${arg_NAME} COMMAND ${arg_COMMAND} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR})
  set(environment ${test_environment})
  if(arg_LIBRARY_PATH)
    list(APPEND environment "LD_LIBRARY_PATH=${arg_LIBRARY_PATH}")
  endif()
  set_tests_properties(${arg_NAME} PROPERTIES ENVIRONMENT "${environment}" TIMEOUT 900)
endfunction()

quorvane_service_test(poster_test)
quorvane_service_test(player_test)
quorvane_service_test(gl_test)

set(virtual_display ${CMAKE_SOURCE_DIR}/tools/virtual-display 1280x1024)
quorvane_add_test(NAME poster_test COMMAND poster_test)
quorvane_add_test(NAME player_test COMMAND player_test)
quorvane_add_test(NAME gl_test COMMAND ${virtual_display} $<TARGET_FILE:gl_test>)

# The same on the SDL 1.2 that sits on SDL 2, which most players have.
execute_process(COMMAND dpkg -L libsdl1.2-compat OUTPUT_VARIABLE compat_files ERROR_QUIET)
if(compat_files MATCHES "(/[^\n]*)/libSDL-1\\.2\\.so\\.0\n")
  set(QUORVANE_COMPAT_SDL "${CMAKE_MATCH_1}")
  quorvane_add_test(NAME gl_test_compat LIBRARY_PATH ${QUORVANE_COMPAT_SDL}
                    COMMAND ${virtual_display} $<TARGET_FILE:gl_test>)
else()
  set(QUORVANE_COMPAT_SDL "")
  message(STATUS "libsdl1.2-compat is not installed: no tests on SDL 2")
endif()
