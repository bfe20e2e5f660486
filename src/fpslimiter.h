// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Paces a loop to a number of frames per second and measures the rate reached. Due times are
// absolute within a measuring period of about a second, so a late frame is caught up by shorter
// sleeps; each period starts afresh, so a long stall is dropped. Knows nothing of the game: it
// reads SDL's millisecond clock and sleeps with SDL_Delay. All clock arithmetic is modulo 2^32.

#pragma once

#include <cstdint>

inline constexpr uint32_t FPSLIMITER_RATE = 50;  // frames per second of every session

struct fpslimiter {
    uint32_t target_rate;    // frames per second wanted
    float frame_ms;          // length of one frame in milliseconds
    uint32_t start_ticks;    // clock reading (ms) at which the measuring period began
    uint32_t period_frames;  // frames of this period, the one being finished included
    float measured_rate;     // frames per second of the last complete period; 0 before the first
    uint32_t delay;          // ms slept by the latest update that slept
};

// A new limiter, reset; the caller frees it with fpslimiter_destroy.
fpslimiter* fpslimiter_init();

// Starts a session: forgets the measurement and goes back to FPSLIMITER_RATE.
void fpslimiter_reset(fpslimiter* fpslimiter);

// Sets the rate (at least 1) and starts a measuring period now; the measurement stays.
void fpslimiter_set_rate(fpslimiter* fpslimiter, uint32_t rate);

float fpslimiter_get_rate(const fpslimiter* fpslimiter);     // measured frames per second
int32_t fpslimiter_get_delay(const fpslimiter* fpslimiter);  // latest sleep in ms

// Finishes one frame: counts it, sleeps until it is due unless `skip` is non-zero, and closes the
// measuring period once it has lasted a second.
void fpslimiter_update(fpslimiter* fpslimiter, int32_t skip);
void fpslimiter_wait(fpslimiter* fpslimiter);  // update that sleeps
void fpslimiter_skip(fpslimiter* fpslimiter);  // update that only counts

// Frees the limiter; null is allowed.
void fpslimiter_destroy(fpslimiter* fpslimiter);
