// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The only source of what can make two games differ: keys, frame times and random numbers. In live
// mode they come from the keyboard, the clock and a clock seed, and all of them are recorded; in
// playback they come from the recording. The mode is fixed when the record is created. The game
// asks here and nowhere else.

#pragma once

#include <cstddef>
#include <cstdint>

struct SDL_keysym;
struct fpslimiter;
struct replay;

enum key_slot : int32_t {
    KEY_FORWARD,
    KEY_BACKWARD,
    KEY_TURN_LEFT,
    KEY_TURN_RIGHT,
    KEY_STRAFE_LEFT,
    KEY_STRAFE_RIGHT,
    KEY_FIRE,
    KEY_SHIELD,   // one-shot: cleared when the game reads the table
    KEY_SPECIAL,  // no key sets it; only a recording can
    KEY_SLOT_COUNT
};

struct key_state {
    int32_t keys[KEY_SLOT_COUNT];  // 1 held, 0 released
    double mouse_x;                // window pixels
    double mouse_y;
};

struct input {
    int32_t is_replay;
    struct replay* replay;       // owned
    struct fpslimiter* limiter;  // owned
    uint32_t seed;               // of the current game
    uint32_t elapsed;            // game time handed out so far, ms
    uint32_t base_ticks;         // clock reading taken as time zero, ms; 0: not started
    struct key_state key_state;
};

// A new record: in playback mode if `filename` is given and its file is accepted, in live mode
// otherwise. The outcome is printed on standard output; ask input_is_replay. The caller frees the
// record with input_destroy.
input* input_init(const char* filename);

// Reads the file whole into `replay`: 0, -1 if it cannot be read, or replay_set_data's code - 100.
int32_t input_read_file(replay* replay, const char* filename);

// Prepares a game: rewinds the log and the clock; in live mode also draws a seed from the calendar
// and records it. Held keys stay held.
void input_reset(input* input);

void input_destroy(input* input);  // null is allowed

// One frame: waits until it is due and returns the game time in ms since the first frame. In
// playback it first applies the frame's recorded events; -1 when the recording has ended.
// A wait of more than a second ends early when the player wants out (interrupt.h).
// A recording made to do so can yield any negative number: take each as the end.
int32_t input_tick(input* input);

// A key press (`pressed` 1) or release (0), recorded if the key has a slot; ignored in playback.
void input_key_event(input* input, const SDL_keysym* keysym, int32_t pressed);

// A mouse position in pixels, recorded; ignored in playback.
void input_mouse_event(input* input, uint32_t x, uint32_t y);

// Copies the key table and clears the one-shot KEY_SHIELD.
void input_get_key_state(input* input, key_state* key_state);

// Applies one recorded event; the replay_callback of playback, with the input as context.
void input_replay_event_cb(uint32_t type, uint32_t value, void* context);

// Builds the signed replay image of a live game in a malloc'ed buffer, which the caller frees.
// Returns 0, or -1 in playback.
int32_t input_get_replay_data(input* input, const char* name, uint32_t score, uint8_t** data,
                              size_t* length);

int32_t input_is_replay(const input* input);
uint32_t input_random();                            // next number of the game generator
float input_get_fps(const input* input);            // measured frames per second
int32_t input_get_frame_delay(const input* input);  // the limiter's latest sleep, ms
