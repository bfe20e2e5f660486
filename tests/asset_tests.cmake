# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Pictures, sounds and music as files.

quorvane_add_test(NAME assets COMMAND ${python} ${CMAKE_CURRENT_SOURCE_DIR}/asset_test.py)
