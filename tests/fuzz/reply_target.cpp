// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The scoreboard's reply: it arrives in pieces, and only printable text gets past the check.

#include <algorithm>
#include <cstdlib>

#include "fuzz.h"
#include "poster.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const size_t piece = data[0];  // 0: all at once
    std::string received(data + 1, data + size);
    poster poster = {nullptr, 0};
    for (size_t at = 0; at < received.size();) {
        const size_t length = std::min(piece == 0 ? size : piece, received.size() - at);
        assert(poster_write_cb(received.data() + at, 1, length, &poster) == length);
        at += length;
    }
    assert(std::string(poster.data, poster.data + poster.size) == received);

    const std::string text = received.substr(0, received.find('\0'));
    const auto accepted = [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); };
    const bool good = !received.empty() && std::all_of(text.begin(), text.end(), accepted);
    assert((poster_check_response(poster.data, poster.size) != 0) == good);
    if (good) {
        assert(std::memchr(poster.data, 0, poster.size) != nullptr);
        assert(poster.data == text.substr(0, text.empty() ? 0 : text.size() - 1));
    }
    std::free(poster.data);
    return 0;
}
