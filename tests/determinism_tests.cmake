# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Other builds play the golden games to the same bits; `tests/determinism` alone tries many more.

find_program(QUORVANE_CLANG clang++)
if(QUORVANE_CLANG AND NOT QUORVANE_SANITIZE)
  add_test(NAME determinism COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/determinism short)
  set_tests_properties(determinism PROPERTIES TIMEOUT 900 LABELS long)
endif()
