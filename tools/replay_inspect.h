// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// A recording as it lies in a file: loading it without trusting a byte, its event records with the
// widths they were written in, what is odd about their sequence, and its signature. The simulation
// has no part in this.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "replay.h"
#include "replay_modify.h"

// Nothing larger is read. A game lasts 135 s; whoever presses all keys all the time fills 2 MB.
inline constexpr size_t FILE_SIZE_LIMIT = size_t{64} << 20;

// From here on the game reads a time as negative, and a playback ends.
inline constexpr uint64_t TIME_LIMIT = uint64_t{1} << 31;

using replay_salt = std::array<uint8_t, REPLAY_SALT_SIZE>;

struct event_record {
    uint32_t type;
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
    std::string path;
    std::vector<uint8_t> bytes;  // the whole file
    std::string name;            // the player's, without the padding
    uint32_t score;
    uint32_t created;
    uint64_t event_count;
    uint64_t duration;                     // sum of the frame times below TIME_LIMIT, ms
    std::array<uint64_t, 64> type_counts;  // by type / 4
    bool steps_unseeded;                   // there is a frame before the first seed
    std::vector<finding> impossible;       // what the program never records
    std::vector<finding> remarks;          // what it may record, seldom
};

// The numbers are exit statuses.
enum load_status {
    LOAD_OK = 0,
    LOAD_BROKEN = 1,      // read, and not a recording
    LOAD_UNREADABLE = 2,  // missing, forbidden or not a regular file
};

// Reads a file and inspects its log. Opens regular files only, and reads no more than the header of
// a file that the header condemns. On failure `reason` says why.
load_status recording_load(const std::string& path, recording* recording, std::string* reason);

// Opens a regular file for reading, or returns null and the reason.
std::FILE* open_regular(const std::string& path, uint64_t* size, std::string* reason);

// Where the running program is, with a slash at the end.
std::string own_folder();

// The salt in a file, or the built-in one for an empty path.
bool read_salt(const std::string& path, replay_salt* salt, std::string* reason);

// Leaves the recording as it was, but needs room behind its bytes for the salt.
bool signature_is_right(recording* recording, const replay_salt& salt);

std::vector<std::string> in_words(const std::vector<finding>& findings);

const char* event_type_name(uint32_t type);  // null for an unknown one
std::string utc_time(uint32_t seconds);      // "2024-02-29 12:00:00 UTC"
size_t shortest_width(uint32_t value);

// The record at `*at`, which moves behind it. False, and nothing moved, if it runs past the end.
inline bool read_event(const std::vector<uint8_t>& bytes, size_t* at, event_record* event) {
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
