// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The development salt, used unless the build names a file of its own (QUORVANE_SALT_FILE): each
// byte's difference from the one before it, modulo 256, the first from 0. Public, so it protects
// nothing; a scoreboard that counts on signatures builds with a salt of its own.

#pragma once

#include <cstdint>

// clang-format off
inline constexpr int8_t REPLAY_SALT_DELTAS[] = {
    121, 75, 78, 13, -89, 66, 79, -120, 31, -2, 120,
    69, -32, 51, -71, 108, -97, 28, -102, -126, -12, 35,
    -109, 28, -30, -114, 110, 98, -72, -104, 21, -77, -54,
    58, 117, -2, 59, 49, -66, -41, -29, -104, -106, 119,
    68, -125, -9, 44, 116, -90, -49, 3, 24, 52, -60,
    -96, 114, 116, -11, 71, 73, 89, 96, -82, -124, -101,
    -99, -105, -38, -125, -117, -34, 119, -127, 14, -23, -81,
};
// clang-format on
