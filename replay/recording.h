// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// A recording as it lies in a file or came over a wire: what its header says, its event records
// with the widths they were written in, what is odd about their sequence, and its signature. No
// byte is trusted, nothing is played, nothing is printed. docs/replay-format.md describes the
// bytes.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "replay.h"
#include "replay_modify.h"

// Nothing larger is taken. The most that the keys of a game without a stall can fill, by the limits
// below: 6,802 frames with KEY_BURST events each, and two for every millisecond of 135 s, is 1.9
// MB.
inline constexpr size_t RECORDING_SIZE_LIMIT = size_t{2} << 20;

// From here on the game reads a time as negative, and a playback ends; ms.
inline constexpr uint64_t TIME_LIMIT = uint64_t{1} << 31;

// The limiter lets no frame come before it is due. Within a measuring period, which is a second at
// most, frames that are late are caught up; so between any two frames of a log there may be more of
// them than the time between them has room for, but by less than this; ms.
inline constexpr int64_t MOST_CAUGHT_UP = 1020;

// Presses and releases of one frame: this many at once, and KEYS_A_MS for each millisecond of the
// frame and of the one before it. A program that stands still gets all keys of that time at once,
// in the frame that was standing or, if it stood while it waited for the frame to be due, in the
// next. Ten fingers that press twenty times a second each make 0.4 presses and releases a
// millisecond, and the twelve keys all pressed and released four times make 96.
inline constexpr uint64_t KEY_BURST = 100;
inline constexpr uint64_t KEYS_A_MS = 1;

using replay_salt = std::array<uint8_t, REPLAY_SALT_SIZE>;

// One record of the log.
struct event_record {
    uint32_t type;  // replay_event_type, or another multiple of 4
    uint32_t value;
    size_t width;  // value bytes, 1 to 4
};

// Something odd about a log, in words.
struct finding {
    std::string text;
    uint64_t count;
    uint64_t first;  // index of the first event concerned
};

struct recording {
    std::span<const uint8_t> bytes;      // the whole file; not owned
    std::string name;                    // the player's, without the padding; any bytes but zero
    uint32_t score = 0;                  // what the header claims
    uint32_t created = 0;                // s since 1970, 0 if unknown
    std::optional<uint32_t> first_seed;  // value of the first event, if that is a seed
    uint64_t event_count = 0;
    uint64_t duration = 0;                   // sum of the frame times below TIME_LIMIT, ms
    std::array<uint64_t, 64> type_counts{};  // by type / 4
    bool steps_unseeded = false;             // there is a frame before the first seed
    bool not_worth_playing = false;   // found impossible by a limit that is there for the cost
    std::vector<finding> impossible;  // what the program never records
    std::vector<finding> remarks;     // what it may record, seldom
};

// Checks the header of `size` bytes of which the first ones (75, or all) are in `data`: empty, or
// why this is no recording.
std::string recording_header_error(std::span<const uint8_t> data, uint64_t size);

// Looks through a whole file image, which must outlive the record: empty, or why it is no
// recording. Throws std::bad_alloc only.
std::string recording_read(std::span<const uint8_t> bytes, recording* recording);

// Whether the file is signed with this salt.
bool signature_is_right(const recording& recording, const replay_salt& salt);

// The salt that this program was built with.
replay_salt built_in_salt();

// One text for each finding: what, how often, from which event on.
std::vector<std::string> in_words(const std::vector<finding>& findings);

const char* event_type_name(uint32_t type);  // null for an unknown one
size_t shortest_width(uint32_t value);       // bytes that a value needs, 1 to 4

// The record at `*at`, which moves behind it. False, and nothing moved, if it runs past the end.
inline bool read_event(std::span<const uint8_t> bytes, size_t* at, event_record* event) {
    const uint32_t head = bytes[*at];
    const size_t width = (head & 3) == 0 ? 4 : head & 3;
    if (width >= bytes.size() - *at) {
        return false;
    }
    uint32_t value = 0;
    for (size_t i = 1; i <= width; ++i) {
        value = value << 8 | bytes[*at + i];
    }
    *event = {head & 0xfc, value, width};
    *at += 1 + width;
    return true;
}
