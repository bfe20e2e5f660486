// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "replay_text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <sstream>

#include "json_writer.h"

namespace {

constexpr const char* FIRST_LINE = "quorvane-replay-text 1";

// The lines of the header. The other fields of a file that can be loaded have one value.
struct header_field {
    const char* key;
    size_t at;
    size_t width;  // up to 4: a number; more: bytes in hexadecimal
};
constexpr header_field HEADER_FIELDS[] = {
    {"signature", 6, 20}, {"name", 31, 32}, {"score", 63, 4}, {"created", 67, 4}};

constexpr const char* SLOT_NAMES[] = {"forward",     "backward",     "turn left", "turn right",
                                      "strafe left", "strafe right", "fire",      "shield"};

constexpr size_t LENGTH_AT = 71;

// How a line names a type.
std::string type_word(uint32_t type) {
    const char* const name = event_type_name(type);
    return name != nullptr ? name : std::to_string(type);
}

std::string hex_of(const uint8_t* data, size_t size) {
    std::string digits;
    for (size_t i = 0; i < size; ++i) {
        digits += format("%02x", data[i]);
    }
    return digits;
}

std::string comment_on(const event_record& event, uint64_t time) {
    if (event.type == REPLAY_EVENT_TICK) {
        return format(" # %" PRIu64 " ms", time);
    }
    const bool is_key = event.type == REPLAY_EVENT_KEY_UP || event.type == REPLAY_EVENT_KEY_DOWN;
    const bool has_name = is_key && event.value < std::size(SLOT_NAMES);
    return has_name ? std::string(" # ") + SLOT_NAMES[event.value] : "";
}

bool pack_header_line(const header_field& field, const std::string& line, uint8_t* header) {
    std::istringstream words(line);
    std::string key;
    std::string digits;
    uint32_t number = 0;
    if (!(words >> key) || key != field.key) {
        return false;
    }
    uint8_t* const data = header + field.at;
    if (field.width == 4) {
        words >> number;
        replay_write_32(data, number);
        return !words.fail() && !(words >> key);
    }
    bool good = words >> digits && digits.size() == 2 * field.width && !(words >> key);
    for (size_t i = 0; good && i < field.width; ++i) {
        const char* const digit = digits.data() + 2 * i;
        good = std::from_chars(digit, digit + 2, data[i], 16).ptr == digit + 2;
    }
    return good;
}

// "tick 20", "28 20" for a type without a name, " width 3" behind either.
bool pack_event_line(const std::string& line, std::vector<uint8_t>* bytes) {
    std::istringstream words(line);
    std::string word;
    uint32_t value = 0;
    if (!(words >> word >> value)) {
        return false;
    }
    uint32_t type = 0;
    while (type < 256 && word != type_word(type)) {
        type += 4;
    }
    size_t width = shortest_width(value);
    if (words >> word && (word != "width" || !(words >> width))) {
        return false;
    }
    if (type == 256 || width < shortest_width(value) || width > 4 || words >> word) {
        return false;
    }
    bytes->push_back(static_cast<uint8_t>(type | (width & 3)));
    while (width-- > 0) {
        bytes->push_back(static_cast<uint8_t>(value >> (8 * width)));
    }
    return bytes->size() <= FILE_SIZE_LIMIT;
}

// Packs a text. Returns the number of the line that cannot be packed, 0 if there is none.
size_t pack_lines(std::FILE* text, std::vector<uint8_t>* bytes) {
    size_t line_number = 0;
    size_t taken = 0;  // lines that are not empty
    char buffer[1024];
    while (std::fgets(buffer, sizeof(buffer), text) != nullptr) {
        ++line_number;
        std::string line = buffer;
        line.resize(std::min(line.find('#'), line.size()));
        line.erase(line.find_last_not_of(" \t\r\n") + 1);
        if (line.empty()) {
            continue;
        }
        const bool good = taken == 0 ? line == FIRST_LINE
                          : taken <= std::size(HEADER_FIELDS)
                              ? pack_header_line(HEADER_FIELDS[taken - 1], line, bytes->data())
                              : pack_event_line(line, bytes);
        if (!good) {
            return line_number;
        }
        ++taken;
    }
    return taken <= std::size(HEADER_FIELDS) ? line_number + 1 : 0;
}

}  // namespace

void dump_recording(const recording& log) {
    const uint8_t* const bytes = log.bytes.data();
    std::puts(FIRST_LINE);
    for (const header_field& field : HEADER_FIELDS) {
        const uint8_t* const data = bytes + field.at;
        const std::string value =
            field.width == 4 ? std::to_string(replay_read_32(data)) : hex_of(data, field.width);
        std::printf("%s %s\n", field.key, value.c_str());
    }
    std::printf("# [%s] %s\n", printable(log.name).c_str(), utc_time(log.created).c_str());
    uint64_t time = 0;
    event_record event{};
    for (size_t at = REPLAY_HEADER_SIZE;
         at < log.bytes.size() && read_event(log.bytes, &at, &event);) {
        time += event.type == REPLAY_EVENT_TICK ? event.value : 0;
        const bool is_wide = event.width != shortest_width(event.value);
        std::printf("%s %u%s%s\n", type_word(event.type).c_str(), event.value,
                    is_wide ? format(" width %zu", event.width).c_str() : "",
                    comment_on(event, time).c_str());
    }
}

int pack_recording(const std::string& text_path, const std::string& out_path) {
    std::string reason;
    uint64_t size = 0;
    std::FILE* const text = text_path == "-" ? stdin : open_regular(text_path, &size, &reason);
    if (text == nullptr) {
        return complain(text_path, reason);
    }
    // The fields without a line.
    struct replay empty {};
    std::vector<uint8_t> bytes(REPLAY_HEADER_SIZE);
    replay_construct_header(&empty, bytes.data(), bytes.size());
    const size_t bad_line = pack_lines(text, &bytes);
    std::fclose(text);
    if (bad_line != 0) {
        return complain(text_path, format("line %zu is no line of a dumped recording", bad_line),
                        1);
    }
    replay_write_32(&bytes[LENGTH_AT], static_cast<uint32_t>(bytes.size() - REPLAY_HEADER_SIZE));

    std::FILE* const out = out_path == "-" ? stdout : std::fopen(out_path.c_str(), "wb");
    if (out == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), out) != bytes.size() ||
        std::fflush(out) != 0) {
        return complain(out_path, std::strerror(errno));
    }
    return 0;
}
