// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// SHA-1 as published in FIPS 180-1, for the signature of a replay file. Written out instead of
// linked: it is eighty lines, and the simulation library stays free of any crypto library, so a
// headless checker builds wherever a C++ compiler does.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

inline constexpr size_t SHA1_DIGEST_SIZE = 20;

// The digest of `length` bytes at `data`, most significant byte of each word first. `data` may be
// null when `length` is 0.
std::array<uint8_t, SHA1_DIGEST_SIZE> sha1(const uint8_t* data, size_t length);
