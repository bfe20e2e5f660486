// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "json_writer.h"

#include <algorithm>
#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <utility>

namespace {

// Characters that a terminal obeys, or that turn the rest of a line around, or that nobody sees.
bool is_hidden(wchar_t c) {
    constexpr struct {
        wchar_t first;
        wchar_t last;
    } RANGES[] = {{0x7f, 0x9f},     {0xad, 0xad},      {0x61c, 0x61c},   {0x180e, 0x180e},
                  {0x200b, 0x200f}, {0x2028, 0x202e},  {0x2060, 0x206f}, {0xfeff, 0xfeff},
                  {0xfff9, 0xfffb}, {0xe0000, 0xe0fff}};
    return std::any_of(std::begin(RANGES), std::end(RANGES),
                       [c](const auto& range) { return c >= range.first && c <= range.last; });
}

std::string utf16_escapes(wchar_t c) {
    if (c < 0x10000) {
        return format("\\u%04x", static_cast<unsigned>(c));
    }
    const auto rest = static_cast<unsigned>(c) - 0x10000;
    return format("\\u%04x\\u%04x", 0xd800 + (rest >> 10), 0xdc00 + (rest & 0x3ff));
}

std::string escaped(std::string_view text, bool json) {
    // Whatever the user's language: names are UTF-8 or bytes.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::string out;
    while (!text.empty()) {
        std::mbstate_t state{};
        wchar_t wide = 0;
        size_t length = std::mbrtowc(&wide, text.data(), text.size(), &state);
        const bool is_special = text[0] == '\\' || (json && text[0] == '"');
        const bool is_whole = length - 1 < text.size();  // and valid, and not a zero byte
        const bool is_shown = json ? wide >= L' ' : std::iswprint(static_cast<wint_t>(wide)) != 0;
        if (is_whole && is_shown && !is_hidden(wide) && !is_special) {
            out += text.substr(0, length);
        } else if (is_whole && json && !is_special) {
            out += utf16_escapes(wide);
        } else {
            const std::string digits = format("%02x", static_cast<uint8_t>(text[0]));
            out += is_special ? std::string("\\") + text[0] : (json ? "\\u00" : "\\x") + digits;
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

int complain(std::string_view subject, std::string_view reason, int status) {
    std::fprintf(stderr, "quorvane-replay: %s: %s\n",
                 subject.empty() ? "an empty name" : printable(subject).c_str(),
                 printable(reason).c_str());
    return status;
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

void report::print(bool as_json) const {
    std::fputs((as_json ? json() : text(" ", "\n")).c_str(), stdout);
}
