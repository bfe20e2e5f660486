// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "replay_text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <sstream>
#include <system_error>

#include "recording_file.h"
#include "tool.h"

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

bool parse_number(const std::string& word, uint32_t* number) {
    const char* const end = word.data() + word.size();
    const auto [behind, error] = std::from_chars(word.data(), end, *number);
    return behind == end && error == std::errc();
}

bool pack_header_line(const header_field& field, const std::string& line, uint8_t* header) {
    std::istringstream words(line);
    std::string key;
    std::string digits;
    uint32_t number = 0;
    if (!(words >> key) || key != field.key || !(words >> digits) || words >> key) {
        return false;
    }
    uint8_t* const data = header + field.at;
    if (field.width == 4) {
        const bool is_number = parse_number(digits, &number);
        replay_write_32(data, number);
        return is_number;
    }
    bool good = digits.size() == 2 * field.width;
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
    std::string digits;
    uint32_t value = 0;
    if (!(words >> word >> digits) || !parse_number(digits, &value)) {
        return false;
    }
    uint32_t type = 0;
    while (type < 256 && word != type_word(type)) {
        type += 4;
    }
    auto width = static_cast<uint32_t>(shortest_width(value));
    if (words >> word && (word != "width" || !(words >> digits) || !parse_number(digits, &width))) {
        return false;
    }
    if (type == 256 || width < shortest_width(value) || width > 4 || words >> word) {
        return false;
    }
    bytes->push_back(static_cast<uint8_t>(type | (width & 3)));
    while (width-- > 0) {
        bytes->push_back(static_cast<uint8_t>(value >> (8 * width)));
    }
    return true;
}

enum line_end { LINE, LAST_LINE, NO_TEXT };

// The next line without its comment.
line_end read_line(std::FILE* text, std::string* line) {
    constexpr size_t LONGEST_LINE = 1024;  // far more than any that is dumped
    line->clear();
    bool is_comment = false;
    int c = 0;
    while ((c = std::getc(text)) != EOF && c != '\n') {
        is_comment |= c == '#';
        if (!is_comment) {
            *line += static_cast<char>(c);
        }
        if (c == '\0' || line->size() > LONGEST_LINE) {
            return NO_TEXT;
        }
    }
    line->erase(line->find_last_not_of(" \t\r") + 1);
    return c == EOF ? LAST_LINE : LINE;
}

// Packs a text, but stops above the limit. Returns the number of the line that cannot be packed, 0
// if there is none.
size_t pack_lines(std::FILE* text, std::vector<uint8_t>* bytes) {
    size_t line_number = 0;
    size_t taken = 0;  // lines that are not empty
    std::string line;
    for (line_end end = LINE; end == LINE;) {
        end = read_line(text, &line);
        ++line_number;
        if (end == NO_TEXT) {
            return line_number;
        }
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
        if (bytes->size() > RECORDING_SIZE_LIMIT) {
            return 0;
        }
        ++taken;
    }
    return taken <= std::size(HEADER_FIELDS) ? line_number : 0;
}

bool write_all(std::FILE* out, const std::vector<uint8_t>& bytes) {
    return std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size() && std::fflush(out) == 0;
}

// Writes a file whole or not at all: what was there stays until the new one is complete. A link to
// a file stays a link. Devices, pipes and links to nothing are written as they are. False, with
// errno, if that fails.
bool write_file(const std::string& path_or_link, const std::vector<uint8_t>& bytes) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path_or_link.c_str(), nullptr),
                                                           &std::free);
    const std::string path = real ? real.get() : path_or_link;
    struct stat status {};
    const bool is_there = stat(path.c_str(), &status) == 0;
    const bool is_link = lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
    if (is_link || (is_there && !S_ISREG(status.st_mode))) {
        std::FILE* const out = std::fopen(path.c_str(), "wb");
        const bool written = out != nullptr && write_all(out, bytes);
        return out != nullptr && std::fclose(out) == 0 && written;
    }
    std::string scratch = path + ".XXXXXX";
    const int handle = mkstemp(scratch.data());
    if (handle < 0) {
        return false;
    }
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(handle, is_there ? status.st_mode & 0777 : 0666 & ~mask);
    std::FILE* const out = fdopen(handle, "wb");
    const bool written = out != nullptr && write_all(out, bytes);
    const int error = errno;
    const bool closed = out != nullptr && std::fclose(out) == 0;
    if (written && closed && std::rename(scratch.c_str(), path.c_str()) == 0) {
        return true;
    }
    const int late_error = errno;
    unlink(scratch.c_str());
    errno = written ? late_error : error;
    return false;
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
    const file_pointer text(text_path == "-" ? stdin
                                             : open_regular(text_path, &size, &reason).release());
    if (!text) {
        return complain(text_path, reason);
    }
    // The fields without a line.
    struct replay empty {};
    std::vector<uint8_t> bytes(REPLAY_HEADER_SIZE);
    replay_construct_header(&empty, bytes.data(), bytes.size());
    errno = 0;
    const size_t bad_line = pack_lines(text.get(), &bytes);
    const std::string error = std::ferror(text.get()) != 0 ? std::strerror(errno) : "";
    if (!error.empty()) {
        return complain(text_path, error);
    }
    if (bad_line != 0) {
        return complain(text_path, format("line %zu is no line of a dumped recording", bad_line),
                        1);
    }
    if (bytes.size() > RECORDING_SIZE_LIMIT) {
        return complain(text_path, "it is larger than any game", 1);
    }
    replay_write_32(&bytes[LENGTH_AT], static_cast<uint32_t>(bytes.size() - REPLAY_HEADER_SIZE));

    const bool written = out_path == "-" ? write_all(stdout, bytes) : write_file(out_path, bytes);
    return written ? 0 : complain(out_path, std::strerror(errno));
}
