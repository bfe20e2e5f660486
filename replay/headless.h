// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What a program needs to play logs without display, audio or libSDL: link this library with the
// simulation. A sound is told to heard_sound (playback.h), drawing does nothing, no wait is
// interrupted, time is a fake clock that only sleeping moves, and files are plain stdio.
// Single-threaded, like the game.

#pragma once

#include <cstdint>
#include <functional>

struct headless {
    uint32_t ticks = 1;      // what SDL_GetTicks reads, ms; 0 would mean "not started" to the input
    uint32_t read_cost = 0;  // ms that pass after each reading, for code that reads it repeatedly
    bool interrupt = false;  // what interrupt_pending answers
    std::function<void(uint32_t ms)> on_delay;  // observes each SDL_Delay, before the clock moves
};

// The one instance. Assign headless{} to put everything back.
extern headless headless_services;
