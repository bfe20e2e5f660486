# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Pictures, sounds and music as files. The system's own Python has the modules for them.

quorvane_add_test(NAME assets COMMAND /usr/bin/python3 ${CMAKE_CURRENT_SOURCE_DIR}/asset_test.py)
