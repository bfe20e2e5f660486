// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "json_writer.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <utility>

namespace {

// Characters that a terminal obeys, or that turn the rest of a line around, or that nobody sees.
bool is_hidden(char32_t c) {
    constexpr struct {
        char32_t first;
        char32_t last;
    } RANGES[] = {{0x0, 0x1f},      {0x7f, 0x9f},       {0xad, 0xad},     {0x61c, 0x61c},
                  {0x180e, 0x180e}, {0x200b, 0x200f},   {0x2028, 0x202e}, {0x2060, 0x206f},
                  {0xe000, 0xf8ff}, {0xfdd0, 0xfdef},   {0xfeff, 0xfeff}, {0xfff0, 0xfffb},
                  {0xfffe, 0xffff}, {0xe0000, 0x10ffff}};
    return std::any_of(std::begin(RANGES), std::end(RANGES),
                       [c](const auto& range) { return c >= range.first && c <= range.last; });
}

// The bytes of the UTF-8 character that the text begins with, in its shortest form and one that can
// be: 0 if there is none.
size_t utf8_character(std::string_view text, char32_t* character) {
    const auto first = static_cast<uint8_t>(text[0]);
    const size_t length = first < 0x80   ? 1
                          : first < 0xc2 ? 0
                          : first < 0xe0 ? 2
                          : first < 0xf0 ? 3
                          : first < 0xf5 ? 4
                                         : 0;
    if (length == 0 || length > text.size()) {
        return 0;
    }
    constexpr uint8_t FIRST_BITS[] = {0, 0x7f, 0x1f, 0x0f, 0x07};
    constexpr char32_t LEAST[] = {0, 0, 0x80, 0x800, 0x10000};
    char32_t found = first & FIRST_BITS[length];
    for (size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<uint8_t>(text[i]);
        if ((byte & 0xc0) != 0x80) {
            return 0;
        }
        found = found << 6 | (byte & 0x3f);
    }
    if (found < LEAST[length] || found > 0x10ffff || (found >= 0xd800 && found < 0xe000)) {
        return 0;
    }
    *character = found;
    return length;
}

std::string utf16_escapes(char32_t c) {
    if (c < 0x10000) {
        return format("\\u%04x", static_cast<unsigned>(c));
    }
    const auto rest = static_cast<unsigned>(c) - 0x10000;
    return format("\\u%04x\\u%04x", 0xd800 + (rest >> 10), 0xdc00 + (rest & 0x3ff));
}

std::string escaped(std::string_view text, bool json) {
    std::string out;
    while (!text.empty()) {
        char32_t character = 0;
        size_t length = utf8_character(text, &character);
        if (text[0] == '\\' || (json && text[0] == '"')) {
            out.append(1, '\\').append(1, text[0]);
        } else if (length > 0 && !is_hidden(character)) {
            out += text.substr(0, length);
        } else if (length > 0 && json) {
            out += utf16_escapes(character);
        } else {
            out += format(json ? "\\u%04x" : "\\x%02x", static_cast<uint8_t>(text[0]));
            length = 1;
        }
        text.remove_prefix(length);
    }
    return out;
}

}  // namespace

std::string format(const char* text, ...) {
    std::va_list arguments;
    va_start(arguments, text);
    std::va_list again;
    va_copy(again, arguments);
    std::string out(static_cast<size_t>(std::vsnprintf(nullptr, 0, text, arguments)), '\0');
    std::vsnprintf(out.data(), out.size() + 1, text, again);
    va_end(again);
    va_end(arguments);
    return out;
}

std::string printable(std::string_view text) { return escaped(text, false); }

std::string json_string(std::string_view text) { return '"' + escaped(text, true) + '"'; }

std::string json_list(const std::vector<std::string>& texts) {
    std::vector<std::string> strings;
    strings.reserve(texts.size());
    for (const std::string& text : texts) {
        strings.push_back(json_string(text));
    }
    return '[' + joined(strings, ",") + ']';
}

std::string joined(const std::vector<std::string>& texts, const char* between) {
    std::string out;
    for (size_t i = 0; i < texts.size(); ++i) {
        out.append(i == 0 ? "" : between).append(texts[i]);
    }
    return out;
}

void report::add(const char* key, int64_t value) {
    add(key, std::to_string(value), std::to_string(value));
}

void report::add(const char* key, std::string_view value) {
    add(key, printable(value), json_string(value));
}

void report::add(const char* key, std::string text, std::string json) {
    fields.push_back({key, std::move(text), std::move(json)});
}

std::string report::text(const char* after_key, const char* after_value) const {
    std::string out;
    for (const field& entry : fields) {
        if (!entry.text.empty()) {
            out.append(entry.key).append(after_key).append(entry.text).append(after_value);
        }
    }
    return out;
}

std::string report::json() const {
    std::vector<std::string> members;
    for (const field& entry : fields) {
        if (!entry.json.empty()) {
            members.push_back(json_string(entry.key) + ':' + entry.json);
        }
    }
    return '{' + joined(members, ",") + "}\n";
}
