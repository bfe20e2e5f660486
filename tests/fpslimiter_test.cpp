// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "fpslimiter.h"

#include "sim_support.h"

namespace {

struct fpslimiter_test : sim_test {
    std::shared_ptr<fpslimiter> limiter{fpslimiter_init(), fpslimiter_destroy};
};

// Late frames do not sleep until the schedule is met again, and leave the last delay alone. Due
// times beyond the clock's wrap are small and count as passed.
TEST_F(fpslimiter_test, frames_end_when_they_are_due) {
    struct {
        uint32_t rate, start;
        uint32_t busy[5];   // ms of work before each frame ends
        int32_t delays[5];  // the latest delay after each
    } const cases[] = {{50, 1000, {0, 5, 20, 19, 0}, {20, 15, 15, 1, 20}},
                       {50, 1000, {70, 0, 0, 9, 0}, {0, 0, 0, 1, 20}},
                       {60, 1000, {0, 0, 0, 0, 0}, {16, 17, 16, 17, 17}},
                       {50, 0xffffffe0U, {0, 0, 12, 0, 0}, {20, 20, 28, 20, 20}}};
    for (const auto& c : cases) {
        headless_services.ticks = c.start;
        fpslimiter_reset(limiter.get());
        fpslimiter_set_rate(limiter.get(), c.rate);
        for (int i = 0; i < 5; ++i) {
            headless_services.ticks += c.busy[i];
            fpslimiter_wait(limiter.get());
            EXPECT_EQ(fpslimiter_get_delay(limiter.get()), c.delays[i])
                << "rate " << c.rate << ", start " << c.start << ", frame " << i + 1;
        }
    }
}

TEST_F(fpslimiter_test, measures_once_a_second_and_starts_afresh) {
    headless_services.ticks = 500;
    headless_services.read_cost = 1;         // every reading is told apart
    fpslimiter_set_rate(limiter.get(), 60);  // reads 500
    EXPECT_EQ(limiter->frame_ms, 16.666666F);
    headless_services.ticks = 1498;
    fpslimiter_skip(limiter.get());  // reads 1498 and 1499: 999 ms, not yet
    EXPECT_EQ(fpslimiter_get_rate(limiter.get()), 0.0F);
    headless_services.ticks = 1499;
    fpslimiter_skip(limiter.get());  // reads 1499 and 1500, then 1501 for the next period
    EXPECT_EQ(fpslimiter_get_rate(limiter.get()), 2.0F);
    EXPECT_EQ(limiter->start_ticks, 1501U);
    fpslimiter_reset(limiter.get());
    EXPECT_EQ(fpslimiter_get_rate(limiter.get()), 0.0F);
    EXPECT_EQ(limiter->frame_ms, 20.0F) << "back at 50 frames per second";
}

}  // namespace
