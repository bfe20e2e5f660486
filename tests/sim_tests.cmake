# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

add_executable(sim_tests
  enemy_test.cpp
  fpslimiter_test.cpp
  game_test.cpp
  golden_test.cpp
  input_test.cpp
  mt19937_test.cpp
  qmath_test.cpp
  replay_test.cpp
  sim_support.cpp)
target_link_libraries(sim_tests PRIVATE quorvane_sim quorvane_headless quorvane_sdl_headers
                                        GTest::gtest_main)
gtest_discover_tests(sim_tests DISCOVERY_TIMEOUT 60
                     WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")

add_executable(judge_tests judge_test.cpp)
target_link_libraries(judge_tests PRIVATE quorvane_game_key quorvane_headless GTest::gtest_main)
gtest_discover_tests(judge_tests DISCOVERY_TIMEOUT 60
                     WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
