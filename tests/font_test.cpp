// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Text in both fonts: what is drawn where, and the cell of every character.

#include "font.h"

#include <numeric>

#include "gui.h"
#include "recorder.h"

namespace {

strings drawn_by(const std::function<void()>& print) {
    start_recording();
    glDisable(GL_TEXTURE_2D);
    gui_ortho_begin(800, 600);
    print();
    gui_ortho_end();
    return seen();
}

// The cells of the last text: as many as characters, upright, side by side from (10, 20) on.
void expect_cells(const std::string& text, double width, double height, double cell_s,
                  double cell_t, const std::function<std::array<double, 2>(int)>& cell) {
    ASSERT_EQ(rec.glyphs.size(), text.size());
    for (size_t i = 0; i < text.size(); i++) {
        const auto [s, t] = cell(static_cast<unsigned char>(text[i]));
        for (size_t k = 0; k < 4; k++) {
            const drawn_vertex& at = rec.glyphs[i].vertices.at(k);
            const double right = k == 1 || k == 2 ? 1 : 0, down = k >= 2 ? 1 : 0;
            EXPECT_NEAR(at.x, 10 + width * (static_cast<double>(i) + right), 1e-6);
            EXPECT_NEAR(at.y, 580 - height * down, 1e-6);
            EXPECT_NEAR(at.s, s + cell_s * right, 1e-6) << "character " << i;
            EXPECT_NEAR(at.t, t + cell_t * down, 1e-6) << "character " << i;
        }
    }
}

TEST(Font, EveryByteHasItsCellAndTextEndsAt255) {
    std::string all(255, '\0');
    std::iota(all.begin(), all.end(), '\1');
    EXPECT_EQ(drawn_by([&] { font_print(10, 20, 0.5F, "%s%s", all.c_str(), "more"); }),
              strings{"'" + all + "' at 10,20 16"});
    expect_cells(all, 16, 16, 0.0625, 0.0625, [](int code) {
        return std::array{code % 16 / 16.0, code / 16 / 16.0};
    });
    EXPECT_EQ(drawn_by([] { font_print_digits(10, 20, 0.5F, "9876543210"); }),
              strings{"[9876543210] at 10,20 36"});
    expect_cells("9876543210", 51, 36, 0.0996, 0.5625, [](int code) {
        return std::array{(code - '0') * 0.0996, 1.0};
    });
    EXPECT_EQ(drawn_by([] { font_print_digits(10, 20, 0.5F, " a/"); }),
              strings{"[:::] at 10,20 36"});
    const drawn_vertex blank = rec.glyphs.at(0).vertices.at(0);  // one coordinate for all corners
    expect_cells(":::", 51, 36, 0, 0, [&](int) { return std::array{blank.s, blank.t}; });
}

TEST(Font, LimitsCharactersAndLeavesDataAlone) {
    const auto print_all = [] {
        font_print_n(1, 2, 1, "ab%s", 3, "cde");
        font_print_n(1, 2, 1, "ab%s", 20, "cde");
        font_print_n(1, 2, 1, "ab%s", -1, "cde");
        font_print_n(1, 2, 1, "ab%s", 0, "cde");
        font_print_n(1, 2, 1, nullptr, 5);
        font_print(1, 2, 1, nullptr);
        font_print_digits(1, 2, 1, nullptr);
        font_print(5, 6, 1, "%s", "100% %s");
        font_print_digits(1, 2, 1, "%-10d", 42);
        font_print_digits(3, 4, 0.5F, "%d", -5);
    };
    EXPECT_EQ(drawn_by(print_all),
              (strings{"'abc' at 1,2 32", "'abcde' at 1,2 32", "'abcde' at 1,2 32",
                       "'100% %s' at 5,6 32", "[42::::::::] at 1,2 72", "[:5] at 3,4 36"}));
    font_destroy();
    EXPECT_EQ(rec.lists.size(), 0U);
}

}  // namespace
