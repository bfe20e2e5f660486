// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The replay log: every input of one game in order, and the signed file image that carries it.
// The input layer owns one log per game; it appends to it in a live game and steps through it in
// a playback. Loading trusts no byte of the data and never looks at the signature.
//
// File: a header of 75 bytes, then event records to the end of the file. Numbers are big-endian.
//
//   offset size
//        0    6  magic "QRVNPL"
//        6   20  SHA-1 of everything from offset 26 on, followed by the salt
//       26    2  format version, 3
//       28    3  the bytes 0, 4, 0
//       31   32  player name, padded on the left with spaces, no terminator
//       63    4  final score
//       67    4  creation time, seconds since 1970-01-01 UTC, 0 if unknown
//       71    4  length of the event records
//       75       event records: one head byte (event type | length code), then the value in
//                1, 2, 3 or 4 bytes for the length codes 1, 2, 3 and 0

#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr size_t REPLAY_HEADER_SIZE = 75;
inline constexpr size_t REPLAY_NAME_SIZE = 32;

// Types are multiples of 4: the low two bits of a record's head byte hold the length code.
enum replay_event_type : uint32_t {
    REPLAY_EVENT_SEED = 4,       // value: seed of the game generator
    REPLAY_EVENT_TICK = 8,       // value: ms since the previous frame; ends the frame
    REPLAY_EVENT_KEY_UP = 12,    // value: key slot
    REPLAY_EVENT_KEY_DOWN = 16,  // value: key slot
    REPLAY_EVENT_MOUSE_X = 20,   // value: pixels
    REPLAY_EVENT_MOUSE_Y = 24,   // value: pixels
};

struct replay_event {
    uint32_t type;
    uint32_t value;
};

struct replay {
    char player_name[REPLAY_NAME_SIZE + 1];
    uint32_t final_score;
    int32_t event_count;   // live: events recorded; playback: index of the next event
    int32_t capacity;      // entries allocated in `events`
    int32_t loaded_count;  // events loaded from a file; 0 in a live game
    replay_event* events;  // owned
};

// Called by replay_next_tick for each event it passes.
using replay_callback = void (*)(uint32_t type, uint32_t value, void* context);

// Reasons to reject a file image.
enum replay_error : int32_t {
    REPLAY_ERROR_MAGIC = -1,
    REPLAY_ERROR_LENGTH = -2,  // the length field contradicts the data's length
    REPLAY_ERROR_VERSION = -3,
    REPLAY_ERROR_BYTE_28 = -4,
    REPLAY_ERROR_BYTE_29 = -5,
    REPLAY_ERROR_BYTE_30 = -6,
    REPLAY_ERROR_SHORT = -7,   // shorter than a header
    REPLAY_ERROR_EVENT = -10,  // an event record runs past the end
};

replay* replay_init();                // an empty log; free it with replay_destroy
void replay_destroy(replay* replay);  // null is allowed

// Rewinds the log and clears name and score; with `clear_all` non-zero loaded events go as well.
void replay_reset(replay* replay, int32_t clear_all);

void replay_grow_array(replay* replay);  // doubles the capacity; no memory is fatal
void replay_add_event(replay* replay, uint32_t type, uint32_t value);

// Of a loaded log: passes every event up to and including the next tick to `callback` and returns
// that tick's value (negative from 2^31 on); -1 when the log ends first.
int32_t replay_next_tick(replay* replay, replay_callback callback, void* context);

void replay_set_player_name(replay* replay, const char* name);  // keeps at most 32 bytes
void replay_set_final_score(replay* replay, uint32_t score);

// Builds the whole signed image in a malloc'ed buffer, which the caller frees.
void replay_get_data(const replay* replay, uint8_t** data, size_t* length);

// Fills the header of an image of `length` bytes whose event records are in place.
void replay_construct_header(const replay* replay, uint8_t* image, size_t length);

// Checks the header of `length` bytes at `data`. Returns its size and takes over name and score,
// or a replay_error.
int32_t replay_validate_header(replay* replay, const uint8_t* data, size_t length);

// Loads an image: 0, or a replay_error. The data stays the caller's. After REPLAY_ERROR_EVENT the
// events before the broken record are in the log.
int32_t replay_set_data(replay* replay, const uint8_t* data, size_t length);

// Big-endian numbers. The writers return the bytes written.
size_t replay_write_16(uint8_t* data, uint16_t value);
size_t replay_write_24(uint8_t* data, uint32_t value);
size_t replay_write_32(uint8_t* data, uint32_t value);
uint16_t replay_read_16(const uint8_t* data);
uint32_t replay_read_24(const uint8_t* data);
uint32_t replay_read_32(const uint8_t* data);
