# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# The values that differ from one deployment to the next. All of them work as they stand.

set(QUORVANE_SCOREBOARD_HOST "localhost:8080" CACHE STRING
    "Host of the scoreboard, with an optional port: uploads go there and the prompt shows it")
set(QUORVANE_SALT_FILE "" CACHE FILEPATH
    "File of exactly 77 bytes, the salt that signs replays; empty for the development salt")

if(NOT QUORVANE_SCOREBOARD_HOST MATCHES "^[A-Za-z0-9.:_-]+$|^\\[[0-9A-Fa-f:.]+\\](:[0-9]+)?$")
  message(FATAL_ERROR "QUORVANE_SCOREBOARD_HOST must be a host name or address with an optional "
                      "port, not '${QUORVANE_SCOREBOARD_HOST}'")
endif()
string(LENGTH "${QUORVANE_SCOREBOARD_HOST}" host_length)
if(host_length GREATER 14)
  message(WARNING "QUORVANE_SCOREBOARD_HOST is ${host_length} characters long: only 14 fit the "
                  "upload prompt of a window 800 pixels wide")
endif()
configure_file(src/deployment.h.in generated/deployment.h @ONLY)

# The salt is compiled in as a table of differences modulo 256, each as a signed byte.
if(QUORVANE_SALT_FILE STREQUAL "")
  set(QUORVANE_SALT_TABLE "replay_salt.h")
else()
  get_filename_component(salt_file "${QUORVANE_SALT_FILE}" ABSOLUTE BASE_DIR "${CMAKE_SOURCE_DIR}")
  if(NOT EXISTS "${salt_file}" OR IS_DIRECTORY "${salt_file}")
    message(FATAL_ERROR "QUORVANE_SALT_FILE: there is no file '${salt_file}'")
  endif()
  file(SIZE "${salt_file}" salt_size)
  if(NOT salt_size EQUAL 77)
    message(FATAL_ERROR "QUORVANE_SALT_FILE: the salt must be exactly 77 bytes, and "
                        "'${salt_file}' has ${salt_size}")
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${salt_file}")
  file(READ "${salt_file}" salt_hex HEX)
  string(REGEX MATCHALL ".." salt_bytes "${salt_hex}")
  set(previous 0)
  set(deltas "")
  foreach(byte IN LISTS salt_bytes)
    math(EXPR value "0x${byte}")
    math(EXPR delta "(${value} - ${previous} + 384) % 256 - 128")
    string(APPEND deltas "    ${delta},\n")
    set(previous ${value})
  endforeach()
  set(QUORVANE_SALT_TABLE "${CMAKE_BINARY_DIR}/generated/replay_salt.h")
  file(CONFIGURE OUTPUT "${QUORVANE_SALT_TABLE}" @ONLY CONTENT
"// Written by the build from QUORVANE_SALT_FILE. Keep it out of any repository.

#pragma once

#include <cstdint>

inline constexpr int8_t REPLAY_SALT_DELTAS[] = {
@deltas@};
")
endif()
