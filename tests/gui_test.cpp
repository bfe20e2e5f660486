// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The head-up display: its texts, the chain picture and the gauge.

#include "gui.h"

#include "animation.h"
#include "game.h"
#include "recorder.h"

namespace {

// clang-format off
strings gauge(int value, int number, int color) {
    gui_ortho_begin(800, 600);
    gui_draw_gauge(800, 600, value, number, color);
    gui_ortho_end();
    return seen();
}

// Run in a process of its own, because the gauge's scale lasts as long as the process. The bar
// shows the part of its picture that lies at the same place of the window.
[[noreturn]] void check_gauge_from_program_start() {
    const std::tuple<int, int, std::vector<int>> steps[] = {  // value, colour, widths in pixels
        {0, COLOR_BLUE, {0}},
        {1, COLOR_BLUE, {400, 600, 700, 750, 775, 787, 793, 796, 798, 799, 799}},
        {2, COLOR_RED, {1199, 1000, 900}},  // the old scale once, then the new one
        {1, COLOR_RED, {650, 525, 463}},
        {0, COLOR_BLUE, {232, 116, 58, 29, 15, 8, 4, 2, 1, 1}}};
    start_recording();
    for (const auto& [value, color, widths] : steps) {
        for (const int width : widths) {
            const double half = color == COLOR_RED ? -(width / 2) : width / 2;
            const double end = 0.5 + (half < 0 ? -width : width) / 1600.0;
            char bar[96];
            std::snprintf(bar, sizeof bar, "gui_gauge_bar at %g,550 %gx50 s %.7g-%.7g",
                          400 + half / 2, std::abs(half / 2), std::min(end, 0.5),
                          std::max(end, 0.5));
            const strings expected{"[0] at 374.5,525 36 #1,1,1,0.8", bar,
                                   "gui_gauge at 400,550 400x50"};
            if (const strings got = gauge(value, 0, color); got != expected) {
                std::fprintf(stderr, "%s, expected %s\n", testing::PrintToString(got).c_str(), bar);
                std::exit(1);
            }
        }
    }
    std::exit(0);
}

TEST(Gui, GaugeClosesHalfTheDistanceAndCentresItsNumber) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(check_gauge_from_program_start(), testing::ExitedWithCode(0), "");
    start_recording();
    for (const auto& [number, text] :
         {std::pair{9, "[9] at 374.5,525"}, {10, "[10] at 349,525"}, {999, "[999] at 323.5,525"}}) {
        EXPECT_EQ(gauge(0, number, 0).at(0), std::string(text) + " 36 #1,1,1,0.8");
    }
}

TEST(Gui, ShowsRateTimeScoreAndChain) {
    const owner<input> keys{input_init(nullptr), input_destroy};
    const owner<animation> chain{animation_init(ANIMATION_CHAIN, 100), animation_destroy};
    ship player{};
    player.chain_animation = chain.get();
    player.score = 12345;
    player.chain_shown = 7;
    const struct {
        int width, height, time_left;
        strings expected;
    } cases[] = {
        {800, 600, 149990,
         {"'0.00' at 10,580 16", "[1499::::::] at 20,15 36 #1,1,1,0.8",
          "[:::::12345] at 270,15 36 #1,1,1,0.8", "gui_chain_2 at 400,100 200x50",
          "[7] at 374.5,525 36 #1,1,1,0.8"}},
        {1281, 720, -520,
         {"'0.00' at 10,700 16", "[:5::::::::] at 20,15 36 #1,1,1,0.8",
          "[:::::12345] at 751,15 36 #1,1,1,0.8", "gui_chain_2 at 640,100 200x50",
          "[7] at 614.5,600 36 #1,1,1,0.8"}}};
    for (const auto& c : cases) {
        start_recording(c.width, c.height);
        glDisable(GL_TEXTURE_2D);
        gui_draw(&player, keys.get(), c.time_left, 150);
        strings lines = seen();
        EXPECT_EQ(lines.size(), 7U);  // and the gauge's bar and frame
        lines.resize(5);
        EXPECT_EQ(lines, c.expected);
        EXPECT_TRUE(rec.enabled[GL_TEXTURE_2D]);
    }
    rec.no_surface = true;
    EXPECT_DEATH(gui_draw(&player, keys.get(), 0, 0), "gui_draw.*surface");
}
// clang-format on

}  // namespace
