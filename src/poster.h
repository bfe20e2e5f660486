// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Posts a replay image to the scoreboard as an HTML form and hands back its short answer. The call
// blocks until the transfer ends and sets no time-out of its own.

#pragma once

#include <cstddef>
#include <cstdint>

struct curl_httppost;

struct poster {
    char* data;     // owned; the reply so far, not terminated
    uint32_t size;  // bytes in it
};

// Posts the image. Returns libcurl's result code, 0 for success. *information is the reply text,
// which the caller frees with std::free, or null when there is none to show.
int32_t poster_send_replay(const uint8_t* data, size_t length, char** information);

// The form: a field "submit" and the file part "replay_file", which points at the caller's data.
// Free it with curl_formfree.
curl_httppost* poster_get_post_data(const char* filename, const uint8_t* data, size_t length);

// libcurl's write callback; `context` is the poster. Takes every byte.
size_t poster_write_cb(char* received, size_t size, size_t count, void* context);

// 1 if the text is printable ASCII and line feeds (up to a zero byte, if there is one), else 0;
// ends it before its last accepted byte, which is the line feed of a well-made reply.
int32_t poster_check_response(char* text, size_t length);
