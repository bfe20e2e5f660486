// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The key of a game: what all recordings of one game have in common, whatever name, score, time and
// signature they bear, and no recording of another game. docs/replay-format.md defines it.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

struct game;

// The bytes that a game's key is the digest of, gathered from step to step.
class game_key_watch {
public:
    explicit game_key_watch(uint32_t seed);

    void take(const game& game);  // after each step

    std::vector<uint8_t> bytes;
};

// Their SHA-256, as 64 lower-case hexadecimal digits. In a library of its own, quorvane_game_key,
// which needs libcrypto.
std::string game_key_digest(std::span<const uint8_t> bytes);
