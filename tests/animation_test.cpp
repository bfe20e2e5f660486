// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Which frame every animation shows when, and the quad that it is drawn as.

#include "animation.h"

#include "recorder.h"

namespace {

// clang-format off
TEST(Animation, ShowsItsFramesForTheirTime) {
    const struct {
        animation_type type;
        std::vector<int> frames;
        int duration;
        bool loop;
        const char* quad;  // in a view of 10 pixels a unit around (400, 300)
    } rows[] = {{ANIMATION_SHIP, {24, 25, 26, 27}, 100, true, "400,300 20x20"},
                {ANIMATION_SHIELD_FLASH, {4, 5}, 50, false, "400,300 20x20"},
                {ANIMATION_SHIELD_BLUE, {6, 7, 8, 9, 10, 11}, 50, true, "400,300 20x20"},
                {ANIMATION_SHIELD_RED, {12, 13, 14, 15, 16, 17}, 100, true, "400,300 20x20"},
                {ANIMATION_SHOT_BLUE, {18, 19, 18, 20}, 100, true, "400,300 10x10"},
                {ANIMATION_SHOT_RED, {21, 22, 21, 23}, 100, true, "400,300 10x10"},
                {ANIMATION_ENEMY_RED, {37, 38, 39, 40, 41}, 200, true, "400,300 10x10"},
                {ANIMATION_ENEMY_BLUE, {32, 33, 34, 35, 36}, 50, true, "400,300 10x10"},
                {ANIMATION_EXPLOSION, {43, 43, 44, 45, 46}, 50, false, "400,300 20x20"},
                {ANIMATION_MUZZLE_FLASH, {42}, 50, false, "400,305 10x10"},
                {ANIMATION_CHAIN, {49, 50, 51, 52, 53, 54, 55}, 50, false,
                 "400,300 2000x500 turned 180 mirrored"}};
    start_recording();
    glTranslated(400, 300, 0);
    glScaled(10, 10, 1);
    for (const auto& row : rows) {
        const owner<animation> anim{animation_init(row.type, 1000), animation_destroy};
        const auto count = static_cast<int32_t>(row.frames.size());
        for (int32_t i = 0; i < 2 * count; i++) {
            for (const int32_t time : {row.duration * i, row.duration * (i + 1) - 1}) {
                SCOPED_TRACE(testing::Message() << "type " << row.type << " after " << time);
                animation_render(anim.get(), 1000 + time);
                const int texture = rec.primitives.empty() ? -1 : rec.primitives[0].texture;
                const int expected = row.frames.at(static_cast<size_t>(i % count));
                EXPECT_EQ(texture, i < count || row.loop ? expected : -1);
                for (const std::string& line : seen()) {
                    EXPECT_EQ(line.substr(line.find(" at ") + 4), row.quad);
                }
            }
        }
    }
    EXPECT_DEATH(animation_render(nullptr, 0), "anim");
}
// clang-format on

}  // namespace
