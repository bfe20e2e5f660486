// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The input layer in both modes: what it records, what it gives back, and how long it waits.

#include "input.h"

#include <SDL.h>

#include <ctime>
#include <random>

#include "sim_support.h"

namespace {

struct input_test : sim_test {
    std::shared_ptr<input> in{input_init(nullptr), input_destroy};

    // Turns the input into a playback of frames that last so long.
    void play_back(const numbers& ticks) {
        replay_reset(in->replay, 1);
        for (const uint32_t tick : ticks) {
            replay_add_event(in->replay, REPLAY_EVENT_TICK, tick);
        }
        in->replay->loaded_count = in->replay->event_count;
        in->is_replay = 1;
        input_reset(in.get());
    }

    void press(int key, int32_t pressed) {
        SDL_keysym keysym = {};
        keysym.sym = static_cast<SDLKey>(key);
        input_key_event(in.get(), &keysym, pressed);
    }

    int32_t read_key(int32_t slot) {
        key_state keys = {};
        input_get_key_state(in.get(), &keys);
        return keys.keys[slot];
    }

    // The log as text, "type:value " for each event.
    std::string recorded() {
        std::ostringstream text;
        for (int32_t i = 0; i < in->replay->event_count; ++i) {
            text << in->replay->events[i].type << ':' << in->replay->events[i].value << ' ';
        }
        return text.str();
    }
};

TEST_F(input_test, a_live_game_records_one_seed_and_its_times) {
    press(SDLK_w, 1);
    headless_services.ticks = 1000;
    input_reset(in.get());  // again, as each game does
    EXPECT_LE(static_cast<uint32_t>(std::time(nullptr)) - in->seed, 2U);
    EXPECT_EQ(input_random(), std::mt19937(in->seed)());
    EXPECT_EQ(read_key(KEY_FORWARD), 1) << "held keys stay held";

    headless_services.ticks += 3;
    EXPECT_EQ(input_tick(in.get()), 0);
    EXPECT_EQ(in->base_ticks, 1020U) << "taken after the limiter slept";
    EXPECT_EQ(input_tick(in.get()), 20);
    headless_services.ticks += 90;  // a stall; the next frame catches up
    EXPECT_EQ(input_tick(in.get()), 110);
    headless_services.ticks += 1;
    EXPECT_EQ(input_tick(in.get()), 111);
    input_mouse_event(in.get(), 7, 0xffffffffU);
    EXPECT_EQ(recorded(),
              "4:" + std::to_string(in->seed) + " 8:0 8:20 8:90 8:1 20:7 24:4294967295 ");
}

TEST_F(input_test, keys_have_slots_and_some_share_one) {
    const int mapped[][2] = {{119, 0}, {273, 0}, {115, 1}, {274, 1}, {276, 2}, {275, 3},
                             {97, 4},  {100, 5}, {32, 6},  {118, 6}, {305, 7}, {306, 7}};
    for (const auto& [key, slot] : mapped) {
        in->replay->event_count = 0;
        press(key, 1);
        EXPECT_EQ(in->key_state.keys[slot], 1) << key;
        press(key, 0);
        EXPECT_EQ(in->key_state.keys[slot], 0) << key;
        EXPECT_EQ(recorded(), "16:" + std::to_string(slot) + " 12:" + std::to_string(slot) + " ");
    }
    in->replay->event_count = 0;
    for (const int dropped : {0, 27, 113, 272, 277, 304, 307}) {
        press(dropped, 1);
    }
    press(SDLK_w, 1);
    press(SDLK_UP, 1);
    press(SDLK_w, 0);
    EXPECT_EQ(read_key(KEY_FORWARD), 0) << "releasing one of two clears the slot";
    press(SDLK_LCTRL, 1);
    EXPECT_EQ(read_key(KEY_SHIELD), 1);
    EXPECT_EQ(read_key(KEY_SHIELD), 0) << "one-shot";
    EXPECT_EQ(recorded(), "16:0 16:0 12:0 16:7 ");
}

TEST_F(input_test, playback_waits_for_the_recorded_times) {
    struct {
        uint32_t tick, busy;  // busy: ms of work before the frame
        numbers delays;
        uint32_t late;  // ms by which everything behind is shifted in sum
    } const frames[] = {{16, 0, {16}, 0}, {20, 5, {15}, 0},   {20, 20, {0}, 0}, {0, 0, {0}, 0},
                        {20, 21, {}, 1},  {999, 0, {999}, 1}, {20, 99, {}, 80}, {20, 0, {20}, 80}};
    const uint32_t start = headless_services.ticks = 0xffffffffU - 40;  // the clock wraps
    play_back({16, 20, 20, 0, 20, 999, 20, 20});
    press(SDLK_w, 1);
    input_mouse_event(in.get(), 1, 1);
    int32_t total = 0;
    for (const auto& frame : frames) {
        delays.clear();
        headless_services.ticks += frame.busy;
        total += static_cast<int32_t>(frame.tick);
        EXPECT_EQ(input_tick(in.get()), total);
        EXPECT_EQ(delays, frame.delays) << "at " << total;
        EXPECT_EQ(in->base_ticks, start + frame.late) << "at " << total;
    }
    EXPECT_EQ(input_get_fps(in.get()), 7000.0F / 1175) << "seven frames came in the first period";
    EXPECT_EQ(read_key(KEY_FORWARD) + in->key_state.mouse_x, 0.0) << "live input is ignored";
    uint8_t* data = nullptr;
    size_t length = 0;
    EXPECT_EQ(input_get_replay_data(in.get(), "", 0, &data, &length), -1);
}

TEST_F(input_test, long_waits_can_be_interrupted) {
    for (const bool interrupted : {false, true}) {
        play_back({5000, 30});
        const uint32_t start = headless_services.ticks;
        headless_services.on_delay = [&](uint32_t ms) {
            EXPECT_LE(ms, 1000U);
            headless_services.interrupt = interrupted;  // arrives during the first slice
        };
        EXPECT_EQ(input_tick(in.get()), 5000) << "the recorded time in any case";
        const uint32_t slept = headless_services.ticks - start;
        EXPECT_TRUE(interrupted ? slept <= 1000 : slept == 5000) << slept;
        EXPECT_EQ(input_tick(in.get()), 5030);
        EXPECT_EQ(headless_services.ticks - start - slept, 30U) << "the rest is not made up for";
    }
}

}  // namespace
