// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "input.h"

#include <SDL.h>
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

#include "assertion.h"
#include "fpslimiter.h"
#include "interrupt.h"
#include "mt19937.h"
#include "replay.h"

namespace {

struct key_binding {
    SDLKey key;
    key_slot slot;
};

constexpr key_binding KEY_BINDINGS[] = {
    {SDLK_w, KEY_FORWARD},     {SDLK_UP, KEY_FORWARD},     {SDLK_s, KEY_BACKWARD},
    {SDLK_DOWN, KEY_BACKWARD}, {SDLK_LEFT, KEY_TURN_LEFT}, {SDLK_RIGHT, KEY_TURN_RIGHT},
    {SDLK_a, KEY_STRAFE_LEFT}, {SDLK_d, KEY_STRAFE_RIGHT}, {SDLK_SPACE, KEY_FIRE},
    {SDLK_v, KEY_FIRE},        {SDLK_RCTRL, KEY_SHIELD},   {SDLK_LCTRL, KEY_SHIELD},
};

constexpr int32_t READ_ERROR = -1;
constexpr int32_t REJECTED = -100;  // added to the replay log's own codes

struct stream_closer {
    void operator()(SDL_RWops* stream) const { SDL_RWclose(stream); }
};

// The whole of a stream. The buffer grows by doubling: the result is that of growing in small
// steps, without moving a large file a thousand times.
class stream_contents {
public:
    ~stream_contents() { std::free(data_); }
    stream_contents() = default;
    stream_contents(const stream_contents&) = delete;
    stream_contents& operator=(const stream_contents&) = delete;

    // False if a read fails or the stream holds more than an image can.
    bool read(SDL_RWops* stream) {
        constexpr size_t FIRST_CAPACITY = 1024;
        while (true) {
            if (length_ == capacity_) {
                capacity_ = capacity_ == 0 ? FIRST_CAPACITY : capacity_ * 2;
                data_ = static_cast<uint8_t*>(std::realloc(data_, capacity_));
                assert(data_);
            }
            const int count =
                SDL_RWread(stream, data_ + length_, 1, static_cast<int>(capacity_ - length_));
            if (count < 0) {
                return false;
            }
            if (count == 0) {
                return true;
            }
            length_ += static_cast<size_t>(count);
            if (length_ > INT_MAX) {
                return false;
            }
        }
    }

    const uint8_t* data() const { return data_; }
    size_t length() const { return length_; }

private:
    uint8_t* data_ = nullptr;
    size_t length_ = 0;
    size_t capacity_ = 0;
};

// Sleeps until a recorded frame is due. An ordinary frame is one sleep; a recording can also ask
// for days, so a long wait comes in slices and ends when the player wants out. Returns the rest
// that was not slept.
uint32_t sleep_until_due(uint32_t wait) {
    constexpr uint32_t LONGEST_UNINTERRUPTED = 1000;
    constexpr uint32_t SLICE = 100;
    if (wait <= LONGEST_UNINTERRUPTED) {
        SDL_Delay(wait);
        return 0;
    }
    while (wait > 0 && !interrupt_pending()) {
        const uint32_t slice = std::min(wait, SLICE);
        SDL_Delay(slice);
        wait -= slice;
    }
    return wait;
}

int32_t live_tick(input* input) {
    fpslimiter_wait(input->limiter);
    const uint32_t now = SDL_GetTicks();
    if (input->base_ticks == 0) {
        input->base_ticks = now;
        input->elapsed = 0;
    }
    const uint32_t total = now - input->base_ticks;
    replay_add_event(input->replay, REPLAY_EVENT_TICK, total - input->elapsed);
    input->elapsed = total;
    return static_cast<int32_t>(total);
}

int32_t playback_tick(input* input) {
    const int32_t delta = replay_next_tick(input->replay, input_replay_event_cb, input);
    if (delta < 0) {
        return -1;
    }
    const auto frame_time = static_cast<uint32_t>(delta);
    if (input->base_ticks == 0) {
        input->base_ticks = SDL_GetTicks();
        input->elapsed = 0;
    }
    fpslimiter_skip(input->limiter);
    const uint32_t passed = (SDL_GetTicks() - input->base_ticks) - input->elapsed;
    const uint32_t wait = frame_time - passed;
    if (static_cast<int32_t>(wait) >= 0) {
        // What a broken-off wait leaves is not slept by the next frame either.
        input->base_ticks -= sleep_until_due(wait);
    } else {
        // Late: time zero moves, so that the rest is late by as much and not hurried.
        input->base_ticks -= wait;
    }
    input->elapsed += frame_time;
    return static_cast<int32_t>(input->elapsed);
}

}  // namespace

input* input_init(const char* filename) {
    auto* input = static_cast<struct input*>(std::calloc(1, sizeof(struct input)));
    assert(input);
    input->replay = replay_init();
    input->limiter = fpslimiter_init();
    if (filename != nullptr) {
        const int32_t result = input_read_file(input->replay, filename);
        if (result == 0) {
            input->is_replay = 1;
            std::printf("initialized replay correctly\n");
        } else {
            std::printf("Error %d initializing replay file\n", result);
        }
    }
    input_reset(input);
    return input;
}

int32_t input_read_file(replay* replay, const char* filename) {
    assert(replay);
    assert(filename);
    // Opening a pipe would wait for somebody who writes into it, and a device need not have an end.
    // One that takes the file's place between this look and the opening still does: the file is
    // opened by SDL, which has no way to open without waiting, and is one of the player's own.
    struct stat status {};
    if (stat(filename, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        return READ_ERROR;
    }
    const std::unique_ptr<SDL_RWops, stream_closer> stream(SDL_RWFromFile(filename, "rb"));
    if (!stream) {
        return READ_ERROR;
    }
    stream_contents contents;
    if (!contents.read(stream.get())) {
        return READ_ERROR;
    }
    const int32_t result = replay_set_data(replay, contents.data(), contents.length());
    return result < 0 ? result + REJECTED : 0;
}

void input_reset(input* input) {
    assert(input);
    const bool live = input->is_replay == 0;
    replay_reset(input->replay, live ? 1 : 0);
    fpslimiter_reset(input->limiter);
    input->elapsed = 0;
    input->base_ticks = 0;
    if (live) {
        input->seed = static_cast<uint32_t>(std::time(nullptr));
        init_genrand(input->seed);
        replay_add_event(input->replay, REPLAY_EVENT_SEED, input->seed);
    }
}

void input_destroy(input* input) {
    if (input != nullptr) {
        replay_destroy(input->replay);
        fpslimiter_destroy(input->limiter);
        std::free(input);
    }
}

int32_t input_tick(input* input) {
    assert(input);
    return input->is_replay != 0 ? playback_tick(input) : live_tick(input);
}

void input_key_event(input* input, const SDL_keysym* keysym, int32_t pressed) {
    assert(input);
    assert(keysym);
    if (input->is_replay != 0) {
        return;
    }
    for (const key_binding& binding : KEY_BINDINGS) {
        if (binding.key == keysym->sym) {
            input->key_state.keys[binding.slot] = pressed;
            replay_add_event(input->replay,
                             pressed != 0 ? REPLAY_EVENT_KEY_DOWN : REPLAY_EVENT_KEY_UP,
                             static_cast<uint32_t>(binding.slot));
            return;
        }
    }
}

void input_mouse_event(input* input, uint32_t x, uint32_t y) {
    assert(input);
    if (input->is_replay != 0) {
        return;
    }
    input->key_state.mouse_x = x;
    input->key_state.mouse_y = y;
    replay_add_event(input->replay, REPLAY_EVENT_MOUSE_X, x);
    replay_add_event(input->replay, REPLAY_EVENT_MOUSE_Y, y);
}

void input_get_key_state(input* input, key_state* key_state) {
    assert(input);
    assert(key_state);
    *key_state = input->key_state;
    input->key_state.keys[KEY_SHIELD] = 0;
}

void input_replay_event_cb(uint32_t type, uint32_t value, void* context) {
    auto* input = static_cast<struct input*>(context);
    assert(input);
    switch (type) {
        case REPLAY_EVENT_SEED:
            input->seed = value;
            init_genrand(value);
            break;
        case REPLAY_EVENT_KEY_UP:
        case REPLAY_EVENT_KEY_DOWN:
            if (value < KEY_SLOT_COUNT) {
                input->key_state.keys[value] = type == REPLAY_EVENT_KEY_DOWN ? 1 : 0;
            }
            break;
        case REPLAY_EVENT_MOUSE_X:
            input->key_state.mouse_x = value;
            break;
        case REPLAY_EVENT_MOUSE_Y:
            input->key_state.mouse_y = value;
            break;
        default:
            break;
    }
}

int32_t input_get_replay_data(input* input, const char* name, uint32_t score, uint8_t** data,
                              size_t* length) {
    assert(input);
    assert(name);
    assert(data);
    assert(length);
    if (input->is_replay != 0) {
        return -1;
    }
    replay_set_player_name(input->replay, name);
    replay_set_final_score(input->replay, score);
    replay_get_data(input->replay, data, length);
    return 0;
}

int32_t input_is_replay(const input* input) {
    assert(input);
    return input->is_replay;
}

uint32_t input_random() { return genrand_int32(); }

float input_get_fps(const input* input) {
    assert(input);
    return fpslimiter_get_rate(input->limiter);
}

int32_t input_get_frame_delay(const input* input) {
    assert(input);
    return fpslimiter_get_delay(input->limiter);
}
