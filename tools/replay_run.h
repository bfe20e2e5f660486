// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Playing a recording again, without waiting: the steps, what they leave, and where two games part.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "game.h"
#include "replay_inspect.h"

// The program steps 50 times a second for at most 135 s; a log may ask for millions of steps.
inline constexpr uint64_t FRAME_LIMIT = 200000;

enum run_end {
    RUN_GOES_ON,
    RUN_SELF,           // the game became over in a step
    RUN_LOG,            // the events ran out
    RUN_NEGATIVE_TICK,  // a frame time of 2^31 ms or more
    RUN_TIME_OVERFLOW,  // the frame times reach 2^31 ms
    RUN_FRAME_LIMIT,    // more frames than any game has
};

inline constexpr const char* RUN_END_NAMES[] = {
    "", "self", "log", "negative-tick", "time-overflow", "frame-limit"};

// A game as a fresh process plays it, whatever was played before. One at a time: the generator of
// its random numbers is the process's.
struct playback {
    explicit playback(const recording& recording);

    bool step();  // to the next frame; false at the end, with nothing done
    int32_t score() const { return game_get_score(game.get()); }

    const std::vector<uint8_t>& bytes;
    std::shared_ptr<struct input> input;
    std::shared_ptr<struct game> game;
    size_t at = REPLAY_HEADER_SIZE;
    uint64_t events = 0;  // used so far
    uint64_t frames = 0;
    uint32_t elapsed = 0;
    int32_t score_before = 0;  // the last step
    run_end end = RUN_GOES_ON;
};

// Prints the final state of a game; with `trace`, a line for each step before it.
void simulate(const recording& recording, bool trace, bool json);

// Prints where a game parts from another one: a recording, or the text that simulate printed for
// one with `trace`, perhaps by another build. Returns an exit status: 0 if they are the same.
int simulate_diff(const recording& recording, const std::string& other, bool json);
