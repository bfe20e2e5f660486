// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Plays the recorded games of golden/ through the real input layer and compares their course with
// a second implementation's, bit for bit. golden/README.md describes the files.

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <map>
#include <span>

#include "judge.h"
#include "loss.h"
#include "recording_file.h"
#include "sim_support.h"
#include "state_hash.h"

namespace {

auto active_shots(const game& game) {
    return std::ranges::count(std::span(game.shots, size_t(game.shot_count)), 1, &shot::active);
}

uint32_t draws_before = 0;  // the game that play() plays

// Plays a file as the session loop does; returns the index's columns from "frames" on.
strings play(const std::string& file,
             const std::function<void(const game&, uint64_t hash)>& observe = nullptr) {
    draws_before = genrand_count();
    headless_services.ticks = 1;
    const std::string path = "golden/games/" + file;
    testing::internal::CaptureStdout();
    const std::shared_ptr<input> input(input_init(path.c_str()), input_destroy);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "initialized replay correctly\n");
    input_reset(input.get());
    const std::shared_ptr<game> game(game_init(input.get(), 100, 800, 600), game_destroy);
    int32_t frames = 0;
    uint64_t hash = STATE_HASH_START;
    std::string end;
    while (end.empty()) {
        const int32_t time = input_tick(input.get());
        if (time < 0) {
            const bool cut_short = input->replay->event_count < input->replay->loaded_count;
            end = time != -1 ? "time-overflow" : cut_short ? "negative-tick" : "log";
            break;
        }
        game_step(game.get(), time);
        ++frames;
        hash = state_hash_step(hash, game.get());
        if (observe) {
            observe(*game, hash);
        }
        end = game_is_over(game.get()) != 0 ? "self" : "";
    }
    EXPECT_EQ(headless_services.ticks - 1, input->elapsed) << "slept for as long as the game was";
    const ship& player = game->players[0];
    return cells_of(
        frames, game->time, end, end == "self" ? game->time : -1, game_get_score(game.get()),
        player.chain_count, player.chain_color, player.chain_shown, player.alive,
        bits_of(player.position.x), bits_of(player.position.y), bits_of(player.velocity.x),
        bits_of(player.velocity.y), bits_of(player.angle), game->shot_count, active_shots(*game),
        std::ranges::count(std::span(game->ships, 100), 1, &ship::alive),
        genrand_count() - draws_before, hex_of(hash));
}

const std::vector<strings>& games() {
    static const std::vector<strings> index = read_table("golden/games/index.tsv", '\t');
    return index;
}

class golden_game : public testing::TestWithParam<size_t> {};

TEST_P(golden_game, takes_its_course) {
    const strings& row = games()[GetParam()];
    const auto compare = [&row] {
        EXPECT_EQ(play(row[0]), strings(row.begin() + 3, row.end()))
            << "columns: " << testing::PrintToString(games()[0]);
    };
    if (row[2] == "0") {
        compare();
        return;
    }
    // This log steps before it seeds: play it in a process whose generator was never seeded.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto compare_and_exit = [&] {
        compare();
        std::exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(compare_and_exit(), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(all, golden_game, testing::Range(size_t{1}, games().size()),
                         [](const testing::TestParamInfo<size_t>& test) {
                             std::string name = games()[test.param][0];
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name.substr(0, name.size() - 4);
                         });

TEST(golden, index_is_complete) { EXPECT_EQ(games().size(), 1 + 73U); }

// What happened in a game, by what each step left behind.
class coverage {
public:
    std::map<std::string, int> seen;
    numbers sounds;  // of the step

    void take(const game& game) {
        const ship& player = game.players[0];
        const enemy_handler& waves = *game.enemy_handler;
        if (waves.current_group >= 0) {
            ++seen["group " + std::to_string(waves.current_group)];
            ++seen["wave of " + std::to_string(waves.groups[waves.current_group].wave_size)];
        }
        const int32_t points = player.score - score;
        const bool one_kill = heard(SOUND_EXPLODE) == 1 && heard(SOUND_SHIELD_HIT) == 0;
        seen["shot absorbed"] += static_cast<int>(heard(SOUND_SHIELD_HIT));
        seen["chain with shots of its colour"] += one_kill && points == 270 + 3 * 9 ? 1 : 0;
        seen["chain with the other colour"] += one_kill && points == 540 + 3 * 27 ? 1 : 0;
        seen["chain broken"] += chain > 0 && player.chain_count == 0 ? 1 : 0;
        seen["return fire"] += has_fired_back(game) ? 1 : 0;
        seen["more than 100 shots"] += game.shot_count > 100 ? 1 : 0;
        seen["past 100 s"] += game.time > 100000 ? 1 : 0;
        if (game.over != 0) {
            const std::string cause = loss.cause(game);
            ++seen["lost to " + cause];
            EXPECT_EQ(heard(SOUND_GAME_OVER), cause == "hull" ? 0 : 1) << cause;
        }
        score = player.score;
        chain = player.chain_count;
        loss.remember(game);
        alive.clear();
        std::transform(game.ships, game.ships + game.ship_count, std::back_inserter(alive),
                       [](const ship& ship) { return ship.alive; });
        sounds.clear();
    }

private:
    ptrdiff_t heard(uint32_t sound) const { return std::ranges::count(sounds, sound); }

    // A shot that is as old as the death of the enemy it begins at.
    bool has_fired_back(const game& game) const {
        const std::span<shot> shots(game.shots, size_t(game.shot_count));
        for (size_t i = 0; i < alive.size(); ++i) {
            const ship& enemy = game.ships[i];
            if (alive[i] != 0 && enemy.alive == 0 &&
                std::ranges::any_of(shots, [&enemy](const shot& shot) {
                    return shot.active != 0 && shot.from_enemy != 0 && shot.age == 0 &&
                           math_distance(&shot.position, &enemy.position) == 0.0;
                })) {
                return true;
            }
        }
        return false;
    }

    int32_t score = 0;
    int32_t chain = 0;
    loss_watch loss;
    std::vector<int32_t> alive;
};

// What no golden game shows, no golden game guards.
TEST(golden, games_cover_the_rules) {
    std::map<std::string, int> seen;
    for (size_t i = 1; i < games().size(); ++i) {
        if (games()[i][2] != "0") {
            continue;
        }
        coverage game;
        heard_sound = [&game](uint32_t id) { game.sounds.push_back(id); };
        play(games()[i][0], [&game](const struct game& now, uint64_t) { game.take(now); });
        for (const auto& [what, times] : game.seen) {
            seen[what] += times > 0 ? 1 : 0;
        }
    }
    heard_sound = nullptr;
    strings wanted = {"wave of 3",
                      "wave of 6",
                      "chain with shots of its colour",
                      "chain with the other colour",
                      "chain broken",
                      "shot absorbed",
                      "return fire",
                      "lost to hole",
                      "lost to edge",
                      "lost to enemy-shot",
                      "lost to own-shot",
                      "lost to hull",
                      "more than 100 shots",
                      "past 100 s"};
    for (int group = 0; group < GROUP_COUNT; ++group) {
        wanted.push_back("group " + std::to_string(group));
    }
    for (const std::string& what : wanted) {
        std::printf("%3d games: %s\n", seen[what], what.c_str());
        EXPECT_GT(seen[what], 0) << what;
    }
}

// The first step that differs tells where to look; everything after it follows from it.
TEST(golden, trace_agrees_step_by_step) {
    const std::vector<strings> lines = read_table("golden/trace-example.txt", '\t');
    std::string sounds;
    heard_sound = [&sounds](uint32_t id) {
        sounds += (sounds.empty() ? "" : ",") + std::to_string(id);
    };
    size_t steps = 0;
    play("0019-lemming.rpl", [&](const game& game, uint64_t hash) {
        const ship& player = game.players[0];
        const strings actual = cells_of(
            steps, hex_of(hash), game.time, game.over, player.score, bits_of(player.position.x),
            bits_of(player.position.y), bits_of(player.angle), game.enemy_handler->alive_count,
            game.shot_count, active_shots(game), game.free_shot_index,
            genrand_count() - draws_before, sounds.empty() ? "-" : sounds);
        if (!testing::Test::HasFailure()) {
            EXPECT_EQ(actual, lines.at(steps)) << "is the first step that differs";
        }
        sounds.clear();
        ++steps;
    });
    heard_sound = nullptr;
    EXPECT_EQ(steps, 726U);
}

// As a process that judges one recording after the other.
TEST(golden, judging_depends_on_nothing_judged_before) {
    std::vector<uint8_t> image;
    std::vector<uint8_t> other;
    std::string reason;
    ASSERT_EQ(recording_file_read("golden/games/0009-ace-other.rpl", &image, &reason), LOAD_OK);
    ASSERT_EQ(recording_file_read("golden/games/0020-ace-same.rpl", &other, &reason), LOAD_OK);
    size_t heard = 0;
    heard_sound = [&heard](uint32_t) { ++heard; };
    const judgement first = judge_recording(image, {built_in_salt(), true});
    EXPECT_EQ(heard, 0U);
    EXPECT_EQ(judge_recording(other, {built_in_salt(), false}).played->course.entries.size(), 0U);
    EXPECT_GT(heard, 0U) << "the listener is put back";
    const judgement again = judge_recording(image, {built_in_salt(), true});
    heard_sound = nullptr;
    EXPECT_EQ(again.played->key, first.played->key);
    EXPECT_EQ(again.played->course.scores, first.played->course.scores);
}

TEST(golden, broken_files_are_answered_by_their_code) {
    const std::vector<strings> rows = read_table("golden/broken/index.tsv", '\t');
    ASSERT_EQ(rows.size(), 1 + 51U);
    for (size_t i = 1; i < rows.size(); ++i) {
        const std::string path = "golden/broken/" + rows[i].at(0);
        SCOPED_TRACE(path + ": " + rows[i].at(2));
        const bool too_short = rows[i][1] == "OTHER";
        const int32_t code = too_short ? REPLAY_ERROR_SHORT - 100 : std::stoi(rows[i][1]);
        testing::internal::CaptureStdout();
        const std::shared_ptr<input> input(input_init(path.c_str()), input_destroy);
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  code == 0 ? "initialized replay correctly\n"
                            : "Error " + std::to_string(code) + " initializing replay file\n");
        EXPECT_EQ(input_is_replay(input.get()), code == 0 ? 1 : 0);
    }
}

}  // namespace
