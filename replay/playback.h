// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Playing a recording again without waiting: the steps, and what their events are heard as. Whoever
// draws the game between two steps sees what the player saw.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "game.h"
#include "recording.h"

// The program steps 50 times a second for at most 135 s; a log may ask for millions of steps.
inline constexpr uint64_t FRAME_LIMIT = 200000;

// Where playing ends. No value is 0, so that nothing that was forgotten looks like an end.
enum run_end : int32_t {
    RUN_GOES_ON = 1,
    RUN_SELF,           // the game became over in a step
    RUN_LOG,            // the events ran out
    RUN_NEGATIVE_TICK,  // a frame time of 2^31 ms or more
    RUN_TIME_OVERFLOW,  // the frame times reach 2^31 ms
    RUN_FRAME_LIMIT,    // more frames than any game has
};

const char* run_end_name(run_end end);  // "self", "log" and so on; "" while it goes on

// Called for each sound effect of a step at the moment at which it would be heard: in the middle of
// the step, with the game as it is there. The silent services of headless.h call it; a program with
// a real player hears instead. There is one, put back by its owner.
using sound_listener = std::function<void(uint32_t id)>;
extern sound_listener heard_sound;

// A game as a fresh process plays it, whatever was played before. One at a time: the generator of
// its random numbers is the process's, and a second playback takes it over.
class playback {
public:
    // Of a whole file image that recording_read has accepted; it must outlive the playback. The
    // size is that of the window to draw in, pixels.
    explicit playback(std::span<const uint8_t> image, int32_t width = 800, int32_t height = 600);
    playback(playback&&) = default;  // no copies: they would step the same game

    bool step();  // to the next frame; false at the end, with nothing done

    // The step that is due at or before game time `time` (ms), if there is one: as step().
    bool step_until(double time);

    int32_t score() const { return game_get_score(game.get()); }
    uint32_t draws() const;  // numbers that the game has drawn

    std::span<const uint8_t> bytes;
    std::shared_ptr<struct input> input;
    std::shared_ptr<struct game> game;
    size_t at = REPLAY_HEADER_SIZE;  // of the next event in the image
    uint64_t events = 0;             // used so far
    uint64_t frames = 0;             // steps made
    uint32_t elapsed = 0;            // game time of the last one, ms
    int32_t score_before = 0;        // the last step
    run_end end = RUN_GOES_ON;

private:
    bool find_frame();

    bool has_frame = false;  // the events of the next frame are taken, its step is to be made
    uint32_t draws_before;
};
