// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "replay.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "assertion.h"
#include "replay_modify.h"
#include "sha1.h"

namespace {

constexpr uint8_t MAGIC[] = {'Q', 'R', 'V', 'N', 'P', 'L'};
constexpr uint16_t FORMAT_VERSION = 3;

// Offsets of the header fields.
constexpr size_t SIGNATURE_AT = 6;
constexpr size_t VERSION_AT = 26;
constexpr size_t NAME_AT = 31;
constexpr size_t SCORE_AT = 63;
constexpr size_t CREATED_AT = 67;
constexpr size_t LENGTH_AT = 71;

constexpr size_t SIGNED_FROM = VERSION_AT;  // the signature covers all from here on

constexpr int32_t FIRST_CAPACITY = 100;

constexpr uint32_t TYPE_MASK = 0xfc;
constexpr uint32_t LENGTH_CODE_MASK = 0x03;

// Bytes of the shortest form of a value.
size_t value_size(uint32_t value) {
    if (value <= 0xff) {
        return 1;
    }
    if (value <= 0xffff) {
        return 2;
    }
    return value <= 0xffffff ? 3 : 4;
}

size_t write_event(uint8_t* data, const replay_event& event) {
    const size_t size = value_size(event.value);
    const auto length_code = static_cast<uint32_t>(size) & LENGTH_CODE_MASK;  // 4 bytes have code 0
    data[0] = static_cast<uint8_t>((event.type & TYPE_MASK) | length_code);
    uint8_t* value = data + 1;
    switch (size) {
        case 1:
            value[0] = static_cast<uint8_t>(event.value);
            break;
        case 2:
            replay_write_16(value, static_cast<uint16_t>(event.value));
            break;
        case 3:
            replay_write_24(value, event.value);
            break;
        default:
            replay_write_32(value, event.value);
            break;
    }
    return 1 + size;
}

uint32_t read_value(const uint8_t* data, size_t size) {
    switch (size) {
        case 1:
            return data[0];
        case 2:
            return replay_read_16(data);
        case 3:
            return replay_read_24(data);
        default:
            return replay_read_32(data);
    }
}

}  // namespace

replay* replay_init() {
    auto* replay = static_cast<struct replay*>(std::calloc(1, sizeof(struct replay)));
    assert(replay);
    replay->capacity = FIRST_CAPACITY;
    replay->events = static_cast<replay_event*>(std::calloc(FIRST_CAPACITY, sizeof(replay_event)));
    assert(replay->events);
    return replay;
}

void replay_destroy(replay* replay) {
    if (replay != nullptr) {
        std::free(replay->events);
        std::free(replay);
    }
}

void replay_reset(replay* replay, int32_t clear_all) {
    assert(replay);
    replay->event_count = 0;
    replay->player_name[0] = '\0';
    replay->final_score = 0;
    if (clear_all != 0) {
        replay->loaded_count = 0;
    }
}

void replay_grow_array(replay* replay) {
    assert(replay);
    void* grown = nullptr;
    if (replay->capacity <= INT_MAX / 2) {
        replay->capacity *= 2;
        const auto count = static_cast<size_t>(replay->capacity);
        grown = std::realloc(replay->events, count * sizeof(replay_event));
    }
    replay->events = static_cast<replay_event*>(grown);
    assert(replay->events);
}

void replay_add_event(replay* replay, uint32_t type, uint32_t value) {
    assert(replay);
    if (replay->event_count == replay->capacity) {
        replay_grow_array(replay);
    }
    replay->events[replay->event_count++] = {type, value};
}

int32_t replay_next_tick(replay* replay, replay_callback callback, void* context) {
    assert(replay);
    assert(callback);
    while (replay->event_count != replay->loaded_count) {
        const replay_event event = replay->events[replay->event_count++];
        callback(event.type, event.value, context);
        if (event.type == REPLAY_EVENT_TICK) {
            return static_cast<int32_t>(event.value);
        }
    }
    return -1;
}

void replay_set_player_name(replay* replay, const char* name) {
    assert(replay);
    assert(name);
    const size_t length = strnlen(name, REPLAY_NAME_SIZE);
    std::memcpy(replay->player_name, name, length);
    replay->player_name[length] = '\0';
}

void replay_set_final_score(replay* replay, uint32_t score) {
    assert(replay);
    replay->final_score = score;
}

void replay_get_data(const replay* replay, uint8_t** data, size_t* length) {
    assert(replay);
    assert(data);
    assert(length);
    size_t total = REPLAY_HEADER_SIZE;
    for (int32_t i = 0; i < replay->event_count; ++i) {
        total += 1 + value_size(replay->events[i].value);
    }
    auto* image = static_cast<uint8_t*>(std::malloc(total));
    assert(image);
    size_t at = REPLAY_HEADER_SIZE;
    for (int32_t i = 0; i < replay->event_count; ++i) {
        at += write_event(image + at, replay->events[i]);
    }
    replay_construct_header(replay, image, total);
    *data = image;
    *length = total;
}

void replay_construct_header(const replay* replay, uint8_t* image, size_t length) {
    assert(replay);
    assert(image);
    assert(length >= REPLAY_HEADER_SIZE);
    std::memcpy(image, MAGIC, sizeof(MAGIC));
    replay_write_16(image + VERSION_AT, FORMAT_VERSION);
    image[28] = 0;
    image[29] = 4;
    image[30] = 0;

    const size_t name_length = strnlen(replay->player_name, REPLAY_NAME_SIZE);
    std::memset(image + NAME_AT, ' ', REPLAY_NAME_SIZE);
    std::memcpy(image + NAME_AT + REPLAY_NAME_SIZE - name_length, replay->player_name, name_length);

    replay_write_32(image + SCORE_AT, replay->final_score);
    const std::time_t now = std::time(nullptr);
    replay_write_32(image + CREATED_AT, now == -1 ? 0 : static_cast<uint32_t>(now));
    replay_write_32(image + LENGTH_AT, static_cast<uint32_t>(length - REPLAY_HEADER_SIZE));

    // The signature comes last: it covers everything else but the magic.
    size_t signed_length = length - SIGNED_FROM;
    auto* scratch = static_cast<uint8_t*>(std::malloc(signed_length));
    assert(scratch);
    std::memcpy(scratch, image + SIGNED_FROM, signed_length);
    replay_modify_data(&scratch, &signed_length);
    const auto digest = sha1(scratch, signed_length);
    std::free(scratch);
    std::memcpy(image + SIGNATURE_AT, digest.data(), digest.size());
}

int32_t replay_validate_header(replay* replay, const uint8_t* data, size_t length) {
    assert(replay);
    assert(data);
    if (length < REPLAY_HEADER_SIZE) {
        return REPLAY_ERROR_SHORT;
    }
    if (std::memcmp(data, MAGIC, sizeof(MAGIC)) != 0) {
        return REPLAY_ERROR_MAGIC;
    }
    if (replay_read_32(data + LENGTH_AT) != length - REPLAY_HEADER_SIZE) {
        return REPLAY_ERROR_LENGTH;
    }
    if (replay_read_16(data + VERSION_AT) != FORMAT_VERSION) {
        return REPLAY_ERROR_VERSION;
    }
    if (data[28] != 0) {
        return REPLAY_ERROR_BYTE_28;
    }
    if (data[29] != 4) {
        return REPLAY_ERROR_BYTE_29;
    }
    if (data[30] != 0) {
        return REPLAY_ERROR_BYTE_30;
    }

    char name[REPLAY_NAME_SIZE + 1];
    std::memcpy(name, data + NAME_AT, REPLAY_NAME_SIZE);
    name[REPLAY_NAME_SIZE] = '\0';
    replay_set_player_name(replay, name + std::strspn(name, " "));
    replay->final_score = replay_read_32(data + SCORE_AT);
    return REPLAY_HEADER_SIZE;
}

int32_t replay_set_data(replay* replay, const uint8_t* data, size_t length) {
    assert(replay);
    assert(data);
    const int32_t header = replay_validate_header(replay, data, length);
    if (header < 0) {
        return header;
    }
    replay->event_count = 0;
    replay->loaded_count = 0;
    size_t at = REPLAY_HEADER_SIZE;
    while (at < length) {
        const uint32_t head = data[at];
        const uint32_t length_code = head & LENGTH_CODE_MASK;
        const size_t size = length_code == 0 ? 4 : length_code;
        if (size >= length - at) {
            return REPLAY_ERROR_EVENT;
        }
        if (replay->loaded_count == replay->capacity) {
            replay_grow_array(replay);
        }
        replay->events[replay->loaded_count++] = {head & TYPE_MASK,
                                                  read_value(data + at + 1, size)};
        at += 1 + size;
    }
    return 0;
}

size_t replay_write_16(uint8_t* data, uint16_t value) {
    assert(data);
    data[0] = static_cast<uint8_t>(value >> 8);
    data[1] = static_cast<uint8_t>(value);
    return 2;
}

size_t replay_write_24(uint8_t* data, uint32_t value) {
    assert(data);
    data[0] = static_cast<uint8_t>(value >> 16);
    data[1] = static_cast<uint8_t>(value >> 8);
    data[2] = static_cast<uint8_t>(value);
    return 3;
}

size_t replay_write_32(uint8_t* data, uint32_t value) {
    assert(data);
    data[0] = static_cast<uint8_t>(value >> 24);
    data[1] = static_cast<uint8_t>(value >> 16);
    data[2] = static_cast<uint8_t>(value >> 8);
    data[3] = static_cast<uint8_t>(value);
    return 4;
}

uint16_t replay_read_16(const uint8_t* data) {
    assert(data);
    return static_cast<uint16_t>(uint32_t{data[0]} << 8 | data[1]);
}

uint32_t replay_read_24(const uint8_t* data) {
    assert(data);
    return uint32_t{data[0]} << 16 | uint32_t{data[1]} << 8 | data[2];
}

uint32_t replay_read_32(const uint8_t* data) {
    assert(data);
    return uint32_t{data[0]} << 24 | uint32_t{data[1]} << 16 | uint32_t{data[2]} << 8 | data[3];
}
