// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "playback.h"

#include "mt19937.h"

namespace {

constexpr uint32_t UNSEEDED = 5489;  // the seed of a generator that was never seeded

}  // namespace

sound_listener heard_sound;

const char* run_end_name(run_end end) {
    switch (end) {
        case RUN_SELF:
            return "self";
        case RUN_LOG:
            return "log";
        case RUN_NEGATIVE_TICK:
            return "negative-tick";
        case RUN_TIME_OVERFLOW:
            return "time-overflow";
        case RUN_FRAME_LIMIT:
            return "frame-limit";
        default:
            return "";
    }
}

playback::playback(std::span<const uint8_t> image, int32_t width, int32_t height)
    : bytes(image),
      input(input_init(nullptr), input_destroy),
      game(game_init(input.get(), GAME_SHIP_COUNT, width, height), game_destroy),
      draws_before(genrand_count()) {
    input->is_replay = 1;
    input->seed = UNSEEDED;
    init_genrand(UNSEEDED);
}

uint32_t playback::draws() const { return genrand_count() - draws_before; }

// Does what the input layer does in a playback, but for the waiting.
bool playback::find_frame() {
    event_record event{};
    while (end == RUN_GOES_ON && !has_frame) {
        if (at == bytes.size() || !read_event(bytes, &at, &event)) {
            end = RUN_LOG;
            break;
        }
        ++events;
        input_replay_event_cb(event.type, event.value, input.get());
        if (event.type != REPLAY_EVENT_TICK) {
            continue;
        }
        if (event.value >= TIME_LIMIT) {
            end = RUN_NEGATIVE_TICK;
        } else if (elapsed + event.value >= TIME_LIMIT) {
            end = RUN_TIME_OVERFLOW;
        } else if (frames == FRAME_LIMIT) {
            end = RUN_FRAME_LIMIT;
        } else {
            elapsed += event.value;
            has_frame = true;
        }
    }
    return has_frame;
}

bool playback::step() {
    if (!find_frame()) {
        return false;
    }
    has_frame = false;
    score_before = score();
    game_step(game.get(), static_cast<int32_t>(elapsed));
    ++frames;
    end = game_is_over(game.get()) != 0 ? RUN_SELF : RUN_GOES_ON;
    return true;
}

bool playback::step_until(double time) { return find_frame() && elapsed <= time && step(); }
