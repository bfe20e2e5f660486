// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "settings.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "assertion.h"

namespace {

struct file_closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using file_pointer = std::unique_ptr<std::FILE, file_closer>;

constexpr size_t LINE_SIZE = 1024;  // a longer line is read in pieces, each a line of its own

// Scans `line` for `key` directly followed by a number, with the result codes of sscanf: 1 for a
// number, 0 for a mismatch, EOF when the line ends before either. Written out because a number out
// of range is undefined there; here it wraps to 32 bits.
int scan_number(const char* line, const char* key, int32_t* number) {
    for (; *key != '\0'; ++key, ++line) {
        if (*line == '\0') {
            return EOF;
        }
        if (*line != *key) {
            return 0;
        }
    }
    while (std::isspace(static_cast<unsigned char>(*line)) != 0) {
        ++line;
    }
    if (*line == '\0') {
        return EOF;
    }
    char* end = nullptr;
    const long value = std::strtol(line, &end, 10);
    if (end == line) {
        return 0;
    }
    *number = static_cast<int32_t>(value);
    return 1;
}

// Copies the text after "key=" into a field of SETTINGS_TEXT_MAX + 1 bytes.
bool scan_text(const char* line, const char* key, char* text) {
    const char* separator = std::strchr(line, '=');
    const size_t key_length = std::strlen(key);
    if (separator == nullptr || static_cast<size_t>(separator - line) != key_length ||
        std::strncmp(line, key, key_length) != 0) {
        return false;
    }
    const char* value = separator + 1;
    const size_t length = strnlen(value, SETTINGS_TEXT_MAX);
    std::memset(text, 0, SETTINGS_TEXT_MAX + 1);
    std::memcpy(text, value, length);
    if (char* newline = std::strchr(text, '\n')) {
        *newline = '\0';
    }
    return true;
}

}  // namespace

settings* settings_init() {
    auto* s = static_cast<settings*>(std::calloc(1, sizeof(settings)));
    assert(s);
    s->width = 800;
    s->height = 600;
    std::strcpy(s->name, "Gamer");
    std::strcpy(s->replay, "replay.rpl");
    s->music = 1;
    return s;
}

int32_t settings_load(settings* s, const char* path) {
    assert(s);
    assert(path);
    const file_pointer file(std::fopen(path, "r"));
    if (!file) {
        return 0;
    }
    char line[LINE_SIZE];
    const auto next_line = [&] {
        return std::fgets(line, static_cast<int>(sizeof(line)), file.get()) != nullptr;
    };
    // A size must be there; the last three lines may end after their "=" and then change nothing.
    const bool complete = next_line() && scan_number(line, "width=", &s->width) == 1 &&
                          next_line() && scan_number(line, "height=", &s->height) == 1 &&
                          next_line() && scan_text(line, "name", s->name) && next_line() &&
                          scan_text(line, "replay", s->replay) && next_line() &&
                          scan_number(line, "mouse=", &s->mouse) != 0 && next_line() &&
                          scan_number(line, "fullscreen=", &s->fullscreen) != 0 && next_line() &&
                          scan_number(line, "music=", &s->music) != 0;
    return complete ? 1 : 0;
}

int32_t settings_save(const settings* s, const char* path) {
    assert(s);
    assert(path);
    const file_pointer file(std::fopen(path, "w"));
    if (!file) {
        return 0;
    }
    std::fprintf(file.get(), "width=%d\n", s->width);
    std::fprintf(file.get(), "height=%d\n", s->height);
    std::fprintf(file.get(), "name=%s\n", s->name);
    std::fprintf(file.get(), "replay=%s\n", s->replay);
    std::fprintf(file.get(), "mouse=%d\n", s->mouse);
    std::fprintf(file.get(), "fullscreen=%d\n", s->fullscreen);
    std::fprintf(file.get(), "music=%d\n", s->music);
    return 1;
}

void settings_destroy(settings* s) { std::free(s); }
