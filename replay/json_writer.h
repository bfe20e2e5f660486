// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Results as text or as a JSON object, from the same list of fields. Names of
// players and files are bytes that anybody chose: nothing in them may break a line, a terminal or
// the JSON.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

__attribute__((format(printf, 1, 2))) std::string format(const char* text, ...);

// For a terminal: control and invisible characters and bytes that are no UTF-8 as \xNN, byte by
// byte, backslashes doubled.
std::string printable(std::string_view text);

std::string json_string(std::string_view text);  // bytes that are no UTF-8 are taken as Latin-1
std::string json_list(const std::vector<std::string>& texts);

std::string joined(const std::vector<std::string>& texts, const char* between);

class report {
public:
    void add(const char* key, int64_t value);
    void add(const char* key, std::string_view value);
    // Both as they are to appear; an empty one appears in the other form only.
    void add(const char* key, std::string text, std::string json);

    std::string text(const char* after_key, const char* after_value) const;
    std::string json() const;  // one object on one line, with the line's end

private:
    struct field {
        const char* key;
        std::string text;
        std::string json;
    };
    std::vector<field> fields;
};
