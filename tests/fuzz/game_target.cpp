// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Whole games of any log, played as the judge plays them and through the game's own input layer.

#include <algorithm>

#include "enemy.h"
#include "fuzz.h"
#include "headless.h"
#include "mt19937.h"
#include "playback.h"
#include "state_hash.h"

namespace {

// Memory, and what a frame costs, are bounded. More shots than this cannot fly: eight waves have 48
// enemies, a game lasts 135 s, and a shot is out of the field after 3 s of flying straight.
constexpr int32_t MOST_SHOTS = 3200;

// libFuzzer keeps inputs that set a byte of this for the first time: it looks for full games, too.
__attribute__((section("__libfuzzer_extra_counters"))) uint8_t reached[3][64];

void reach(size_t kind, int32_t value) { reached[kind][std::clamp(value, 0, 63)] = 1; }

struct course {
    uint64_t frames = 0;
    uint64_t hash = STATE_HASH_START;

    void take(const game& game) {
        if (++frames % 16 == 0) {  // dearer than a step
            hash = state_hash_step(hash, &game);
        }
        assert(game.shot_count <= MOST_SHOTS);
        reach(0, game.shot_count / 100);
        reach(1, game.enemy_handler->alive_count);
        reach(2, game_get_score(&game) / 500);
    }
};

course play_as_judge(const recording& log) {
    course course;
    playback run(log.bytes);
    while (run.step()) {
        course.take(*run.game);
    }
    course.hash = state_hash_step(course.hash, run.game.get());
    return course;
}

course play_as_program(const recording& log) {
    headless_services = headless{};
    headless_services.interrupt = true;  // nobody waits for days
    const std::shared_ptr<input> input(input_init(nullptr), input_destroy);
    input->is_replay = 1;
    assert(replay_set_data(input->replay, log.bytes.data(), log.bytes.size()) == 0);
    input_reset(input.get());
    init_genrand(5489);  // as if never seeded
    const std::shared_ptr<game> game(game_init(input.get(), GAME_SHIP_COUNT, 800, 600),
                                     game_destroy);
    course course;
    while (game_is_over(game.get()) == 0 && course.frames < FRAME_LIMIT) {
        const int32_t time = input_tick(input.get());
        if (time < 0) {
            break;
        }
        game_step(game.get(), time);
        course.take(*game);
    }
    course.hash = state_hash_step(course.hash, game.get());
    return course;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<uint8_t> image = as_recording(data, size);
    recording log;
    if (recording_read(image, &log).empty()) {
        const course judged = play_as_judge(log);
        const course played = play_as_program(log);
        assert(judged.hash == played.hash && judged.frames == played.frames);
    }
    return 0;
}
