// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The starfield on the screen: every star a white point of its size, in order, in few batches.

#include "starfield.h"

#include <cmath>

#include "recorder.h"

namespace {

TEST(Starfield, DrawsStarsInOrderInBatchesOfOneSize) {
    start_recording();
    starfield field{};
    field.rotation = 2.25;  // a quarter turn
    for (int i = 0; i < STARFIELD_STAR_COUNT; i++) {
        field.stars[i] = {i + 1.0, 0, 0, (i / 3 % 5) * 0.4};  // five sizes, 0 too
    }
    starfield_draw(&field);
    EXPECT_LE(rec.primitives.size(), 67U);
    int next = 0;
    for (const primitive& batch : rec.primitives) {
        EXPECT_TRUE(batch.kind == GL_POINTS && !batch.textured &&
                    batch.color == rgba({1, 1, 1, 1}));
        for (const drawn_vertex& point : batch.vertices) {
            // A star of size 0 keeps the size before it, or is left out.
            while (next < STARFIELD_STAR_COUNT - 1 && field.stars[next].size == 0 &&
                   point.y > next + 1.5) {
                next++;
            }
            const float size = static_cast<float>(field.stars[next].size);
            EXPECT_NEAR(point.x, 0, 1e-9);
            EXPECT_NEAR(point.y, ++next, 1e-9);
            EXPECT_EQ(size == 0 ? 0 : batch.point_size, size) << "of star " << next;
        }
    }
    EXPECT_GE(next, STARFIELD_STAR_COUNT - 2);  // the last two have size 0
    rec.primitives.clear();
    EXPECT_EQ(seen(), strings());
}

TEST(Starfield, DriftsWhateverTheTimeAndIsRebornAtTheRim) {
    starfield* field = starfield_init(20.0F);
    field->stars[0] = {0.0, -15.0, 0.07, 1.0};  // place, speed, size
    field->stars[1] = {0.31, 0.0, 0.05, 1.0};
    field->stars[2] = {22.1, 0.0, 0.05, 1.0};
    starfield_update(field, 0);
    starfield_update(field, 0);
    EXPECT_NEAR(field->stars[0].y, -14.86, 1e-12);
    for (const star& star : field->stars) {
        EXPECT_TRUE(std::hypot(star.x, star.y) > 9.8 && std::hypot(star.x, star.y) < 20.0);
        EXPECT_TRUE(star.speed >= 0.05 && star.speed < 0.1 && star.size >= 0 && star.size < 1.81);
    }
    starfield_update(field, 2500);
    EXPECT_EQ(field->rotation, 0.25);
    starfield_destroy(field);
}

}  // namespace
