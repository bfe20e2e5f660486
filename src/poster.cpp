// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "poster.h"

#include <curl/curl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "assertion.h"
#include "deployment.h"

namespace {

constexpr const char* UPLOAD_ADDRESS = "http://" SCOREBOARD_HOST "/quorva/uploader/upload.php";

struct curl_closer {
    void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
};
struct form_freer {
    void operator()(curl_httppost* form) const { curl_formfree(form); }
};

// As a signed byte: everything from 128 on is below 0 and refused with the control characters.
bool is_accepted(char character) {
    const auto value = static_cast<signed char>(character);
    return (value > 31 && value != 127) || value == '\n';
}

}  // namespace

int32_t poster_send_replay(const uint8_t* data, size_t length, char** information) {
    assert(data);
    assert(information);
    *information = nullptr;
    poster poster = {nullptr, 0};
    CURLcode result = CURLE_FAILED_INIT;
    if (const std::unique_ptr<CURL, curl_closer> curl(curl_easy_init()); curl) {
        const std::unique_ptr<curl_httppost, form_freer> form(
            poster_get_post_data("replay.rpl", data, length));
        curl_easy_setopt(curl.get(), CURLOPT_URL, UPLOAD_ADDRESS);
        curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, poster_write_cb);
        curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &poster);
        curl_easy_setopt(curl.get(), CURLOPT_HTTPPOST, form.get());
        result = curl_easy_perform(curl.get());
    }
    if (result == CURLE_OK && poster_check_response(poster.data, poster.size) != 0) {
        *information = poster.data;
    } else {
        std::free(poster.data);
    }
    return static_cast<int32_t>(result);
}

curl_httppost* poster_get_post_data(const char* filename, const uint8_t* data, size_t length) {
    assert(filename);
    assert(data);
    curl_httppost* first = nullptr;
    curl_httppost* last = nullptr;
    curl_formadd(&first, &last, CURLFORM_COPYNAME, "submit", CURLFORM_COPYCONTENTS, "Upload file",
                 CURLFORM_END);
    // Variable arguments: the length must be passed as the long that libcurl takes out.
    curl_formadd(&first, &last, CURLFORM_COPYNAME, "replay_file", CURLFORM_BUFFER, filename,
                 CURLFORM_BUFFERPTR, data, CURLFORM_BUFFERLENGTH, static_cast<long>(length),
                 CURLFORM_END);
    return first;
}

size_t poster_write_cb(char* received, size_t size, size_t count, void* context) {
    auto* poster = static_cast<struct poster*>(context);
    assert(received);
    assert(poster);
    const size_t added = size * count;
    if (added == 0) {
        return 0;
    }
    const uint64_t total = uint64_t{poster->size} + added;
    poster->data = static_cast<char*>(
        total <= UINT32_MAX ? std::realloc(poster->data, static_cast<size_t>(total)) : nullptr);
    assert(poster->data);
    std::memcpy(poster->data + poster->size, received, added);
    poster->size = static_cast<uint32_t>(total);
    return added;
}

int32_t poster_check_response(char* text, size_t length) {
    if (text == nullptr || length == 0) {
        return 0;
    }
    size_t i = 0;
    while (i < length && is_accepted(text[i])) {
        ++i;
    }
    bool acceptable = true;
    if (i < length && text[i] != '\0') {
        acceptable = false;
        std::printf("found invalid character %d from index %zu\n",
                    static_cast<int>(static_cast<signed char>(text[i])), i);
    }
    if (i > 0 && text[i - 1] != '\0') {
        text[i - 1] = '\0';
    }
    return acceptable ? 1 : 0;
}
