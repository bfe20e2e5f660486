# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Bytes from outside, whatever they hold. Here each target takes the inputs worth keeping; fuzz/run
# builds the same targets with QUORVANE_FUZZ and looks for more.

option(QUORVANE_FUZZ "Link the fuzz targets with libFuzzer (needs clang)" OFF)

# quorvane_fuzz_target(NAME LIBRARY...)
function(quorvane_fuzz_target name)
  add_executable(fuzz_${name} fuzz/${name}_target.cpp)
  target_link_libraries(fuzz_${name} PRIVATE ${ARGN})
  if(QUORVANE_FUZZ)
    target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  else()
    target_sources(fuzz_${name} PRIVATE fuzz/runner.cpp)
    add_test(NAME fuzz.${name} COMMAND fuzz_${name} ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus/${name})
    set_tests_properties(fuzz.${name} PROPERTIES ENVIRONMENT "${test_environment}" TIMEOUT 900)
  endif()
endfunction()

quorvane_fuzz_target(replay quorvane_sim quorvane_recordings quorvane_headless)
quorvane_fuzz_target(game quorvane_sim quorvane_recordings quorvane_headless)
quorvane_fuzz_target(settings quorvane_program)
quorvane_fuzz_target(reply quorvane_program)
quorvane_fuzz_target(text quorvane_program GTest::gtest)

target_sources(fuzz_text PRIVATE recorder.cpp)
