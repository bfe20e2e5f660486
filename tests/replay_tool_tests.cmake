# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# The headless player of recordings, driven from outside on golden and hand-made files.

foreach(case verdicts golden_games names_and_jobs broken_files round_trip packing simulate diff info
             documented_example bad_input hostile_names scarcity crash deaf_to_children progress key course
             likeness export video)
  add_test(NAME replay_tool.${case}
           COMMAND ${python} ${CMAKE_CURRENT_SOURCE_DIR}/replay_tool_test.py
                   $<TARGET_FILE:quorvane-replay> ReplayTool.test_${case})
  set_tests_properties(replay_tool.${case} PROPERTIES TIMEOUT 900)
endforeach()
set_tests_properties(replay_tool.export replay_tool.video PROPERTIES ENVIRONMENT "${test_environment}")
