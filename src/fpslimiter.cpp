// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "fpslimiter.h"

#include <SDL.h>

#include <cstdlib>

#include "assertion.h"

namespace {

constexpr uint32_t MEASURING_PERIOD_MS = 1000;

}  // namespace

fpslimiter* fpslimiter_init() {
    auto* fpslimiter = static_cast<struct fpslimiter*>(std::calloc(1, sizeof(struct fpslimiter)));
    assert(fpslimiter);
    fpslimiter->target_rate = FPSLIMITER_RATE;
    fpslimiter_reset(fpslimiter);
    return fpslimiter;
}

void fpslimiter_reset(fpslimiter* fpslimiter) {
    assert(fpslimiter);
    fpslimiter->start_ticks = 0;
    fpslimiter->period_frames = 0;
    fpslimiter->measured_rate = 0.0F;
    fpslimiter->delay = 0;
    fpslimiter_set_rate(fpslimiter, FPSLIMITER_RATE);
}

void fpslimiter_set_rate(fpslimiter* fpslimiter, uint32_t rate) {
    assert(fpslimiter);
    assert(rate >= 1);
    fpslimiter->target_rate = rate;
    fpslimiter->frame_ms = static_cast<float>(1000.0 / rate);
    fpslimiter->start_ticks = SDL_GetTicks();
    fpslimiter->period_frames = 0;
}

float fpslimiter_get_rate(const fpslimiter* fpslimiter) {
    assert(fpslimiter);
    return fpslimiter->measured_rate;
}

int32_t fpslimiter_get_delay(const fpslimiter* fpslimiter) {
    assert(fpslimiter);
    return static_cast<int32_t>(fpslimiter->delay);
}

void fpslimiter_update(fpslimiter* fpslimiter, int32_t skip) {
    assert(fpslimiter);
    fpslimiter->period_frames += 1;

    const uint32_t now = SDL_GetTicks();
    // The product in double: in float, 3 frames of 16.666666 ms would come out as 50 ms, not 49.
    const double offset = static_cast<double>(fpslimiter->frame_ms) * fpslimiter->period_frames;
    const uint32_t due =
        fpslimiter->start_ticks + static_cast<uint32_t>(static_cast<uint64_t>(offset));
    if (now < due && skip == 0) {
        fpslimiter->delay = due - now;
        SDL_Delay(fpslimiter->delay);
    }

    const uint32_t elapsed = SDL_GetTicks() - fpslimiter->start_ticks;
    if (elapsed >= MEASURING_PERIOD_MS) {
        const auto frames = static_cast<float>(uint64_t{fpslimiter->period_frames} * 1000);
        fpslimiter->measured_rate = frames / static_cast<float>(elapsed);
        fpslimiter_set_rate(fpslimiter, fpslimiter->target_rate);
    }
}

void fpslimiter_wait(fpslimiter* fpslimiter) {
    assert(fpslimiter);
    fpslimiter_update(fpslimiter, 0);
}

void fpslimiter_skip(fpslimiter* fpslimiter) {
    assert(fpslimiter);
    fpslimiter_update(fpslimiter, 1);
}

void fpslimiter_destroy(fpslimiter* fpslimiter) { std::free(fpslimiter); }
