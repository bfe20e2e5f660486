// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Text of any bytes at any place and in any size, in both fonts, and the screen that shows the
// scoreboard's reply, on the OpenGL of recorder.h.

#include "../recorder.h"
#include "font.h"
#include "fuzz.h"
#include "gui.h"
#include "menu.h"

namespace {

constexpr size_t LONGEST_TEXT = 255;

struct {
    float x, y, scale;
    int32_t count, width, height;
    double number;
} given;

// Takes the text that was drawn last; none was if it is empty.
std::string drawn() {
    const auto primitives = std::exchange(rec.primitives, {});
    assert(primitives.size() <= 1);
    return primitives.empty() ? "" : primitives[0].text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < sizeof(given)) {
        return 0;
    }
    std::memcpy(&given, data, sizeof(given));
    const auto& [x, y, scale, count, width, height, number] = given;
    const std::string bytes(data + sizeof(given), data + size);
    const char* const text = bytes.c_str();
    const std::string shown = std::string(text).substr(0, LONGEST_TEXT);

    static const bool started = (start_recording(), true);
    assert(started);
    gui_ortho_begin(800, 600);
    font_print(x, y, scale, "%s", text);
    assert(drawn() == shown);
    font_print_n(x, y, scale, "%s", count, text);
    assert(drawn() == shown.substr(0, count < 0 ? LONGEST_TEXT : static_cast<size_t>(count)));
    font_print_digits(x, y, scale, "%s", text);
    const std::string digits = drawn();
    assert(digits.size() == shown.size());
    assert(digits.find_first_not_of("0123456789:") == std::string::npos);
    font_print_digits(x, y, scale, "%-10d", count);
    assert(drawn().size() >= 10);
    font_print(x, y, scale, "%3.2f", number);
    assert(drawn().size() <= LONGEST_TEXT);
    gui_ortho_end();

    const owner<menu> menu(menu_init(width, height), menu_destroy);
    menu_message_screen(menu.get(), text);
    for (const primitive& row : rec.primitives) {
        assert(row.text.find('\n') == std::string::npos && bytes.find(row.text) < bytes.size());
    }
    assert(rec.problems.empty() && rec.stacks[0].size() == 1 && rec.stacks[1].size() == 1);
    rec.primitives.clear();
    rec.trace.clear();
    return 0;
}
