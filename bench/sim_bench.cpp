// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The simulation, recording and arithmetic, without display or libSDL. Runs in the project's root.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "counted_heap.h"
#include "headless.h"
#include "mt19937.h"
#include "player.h"
#include "qmath.h"
#include "recorded_game.h"

namespace {

using benchmark::Counter;
using benchmark::State;

// --- One step, against what there is to do --------------------------------------------------

constexpr int32_t STILL_TIME = 1000;  // ms

vector polar(double radius, double angle) {
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

// Puts enemies on their paths and shots where they hit nothing, a quarter of them in the hole's
// pull. Steps of no length then repeat the same work: nothing moves, though everything is moved.
void populate(game* game, int32_t enemies, int32_t shots) {
    std::mt19937 random(1);
    const auto uniform = [&random](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    game->time = STILL_TIME;
    game->players[0].position = {0.0, -9.0};
    game->enemy_handler->alive_count = game->ship_count;  // so that no wave comes
    for (int32_t i = 0; i < enemies; ++i) {
        ship* enemy = game_spawn_ship(game, i % 2);
        enemy->enemy_group = i % GROUP_COUNT;
        const double angle = (enemy->enemy_group + 0.5) * MATH_TWO_PI / 8.0;
        group_state& group = game->enemy_handler->groups[enemy->enemy_group];
        group.speed = 1.0;
        group.entry = polar(10.0, angle);
        enemy->velocity = polar(-1.0, angle);
        enemy->age = static_cast<int32_t>(uniform(0.0, 3000.0));
    }
    game_step(game, STILL_TIME);
    for (int32_t i = 0; i < shots; ++i) {
        const int32_t slot = game_find_free_shot(game);  // may move the pool
        shot& shot = game->shots[slot];
        shot.active = 1;
        shot.age = 500;
        shot.from_enemy = i % 2;
        shot.velocity = polar(5.0, uniform(0.1, 1.5));
        const auto near = [&shot](const ship& ship) {
            return math_distance(&ship.position, &shot.position) < 0.6;
        };
        do {
            const double radius = i % 4 == 0 ? uniform(2.0, 4.0) : uniform(4.1, 14.9);
            shot.position = polar(radius, uniform(0.0, MATH_TWO_PI));
        } while (near(game->players[0]) || std::any_of(game->ships, game->ships + enemies, near));
    }
}

void step(State& state) {
    const auto enemies = static_cast<int32_t>(state.range(0));
    const auto shots = static_cast<int32_t>(state.range(1));
    const std::shared_ptr<input> input(input_init(nullptr), input_destroy);
    const std::shared_ptr<game> game(game_init(input.get(), GAME_SHIP_COUNT, 800, 600),
                                     game_destroy);
    populate(game.get(), enemies, shots);
    for ([[maybe_unused]] auto _ : state) {
        game_step(game.get(), STILL_TIME);
    }
    if (shots_in_flight(game.get()) != shots || game_is_over(game.get()) != 0) {
        state.SkipWithError("the scene has changed");
    }
}
BENCHMARK(step)->ArgsProduct({{0, 10, 30, 100}, {0, 30, 100, 300}})->ArgNames({"enemies", "shots"});

// --- Whole games ----------------------------------------------------------------------------

// Plays games as quorvane-replay does.
void play(State& state, const std::vector<std::string>& names) {
    std::vector<std::vector<uint8_t>> games;
    size_t bytes = 0;
    for (const std::string& name : names) {
        games.push_back(recorded_game(name));
        bytes += games.back().size();
    }
    uint64_t steps = 0;
    uint64_t played_ms = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (const std::vector<uint8_t>& game : games) {
            playback run(game);
            while (run.step()) {
            }
            steps += run.frames;
            played_ms += run.elapsed;
        }
    }
    const auto frames = static_cast<double>(steps) / static_cast<double>(state.iterations());
    state.counters["times_real"] =
        Counter(static_cast<double>(played_ms) / 1000.0, Counter::kIsRate);
    state.counters["s_per_step"] =
        Counter(static_cast<double>(steps), Counter::kIsRate | Counter::kInvert);
    state.counters["log_bytes_per_frame"] = static_cast<double>(bytes) / frames;
}

void play_busy(State& state) {
    play(state, {BUSY_GAMES[state.range(0)]});
    state.SetLabel(BUSY_GAMES[state.range(0)]);
}
BENCHMARK(play_busy)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

// Every recording there that a person could have made.
void play_all(State& state) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("tests/golden/games")) {
        const std::string name = entry.path().stem();
        if (entry.path().extension() == ".rpl" && name.find("-adv-") == std::string::npos) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    state.SetLabel(std::to_string(names.size()) + " games");
    play(state, names);
}
BENCHMARK(play_all)->Unit(benchmark::kMillisecond);

// What steps ask of the heap, held against what happens in them: an animation, which is two
// requests, for each shot of the player, kill, change of shield and new enemy, and one request
// when the shot pool grows. No time is measured.
void step_allocations(State& state) {
    double sounds[SOUND_COUNT] = {};
    heard_sound = [&sounds](uint32_t id) { sounds[id] += 1; };
    double steps = 0;
    double idle_steps = 0;
    double unexplained = 0;
    double spawns = 0;
    double growths = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (const char* name : BUSY_GAMES) {
            const std::vector<uint8_t> bytes = recorded_game(name);
            playback run(bytes);
            const game* game = run.game.get();
            while (true) {
                const auto all_spawns = [&] {
                    return game->enemy_handler->alive_count + sounds[SOUND_EXPLODE];
                };
                const auto animations = [&] {
                    return all_spawns() + sounds[SOUND_SHOOT_PLAYER] + sounds[SOUND_EXPLODE] +
                           sounds[SOUND_SHIELD_CHANGE];
                };
                const int64_t requests = heap_requests;
                const int32_t pool = game->shot_count;
                const double spawned = all_spawns();
                const double animated = animations();
                if (!run.step() || run.end == RUN_SELF) {  // the ship's own end is not counted
                    break;
                }
                const auto asked = static_cast<double>(heap_requests - requests);
                const double grown = game->shot_count != pool ? 1 : 0;
                steps += 1;
                idle_steps += asked == 0 ? 1 : 0;
                unexplained += std::fabs(asked - 2 * (animations() - animated) - grown);
                spawns += all_spawns() - spawned;
                growths += grown;
            }
        }
    }
    heard_sound = nullptr;
    state.counters = {{"steps", steps},
                      {"steps_without", idle_steps},
                      {"unexplained", unexplained},
                      {"spawns", spawns},
                      {"pool_growths", growths},
                      {"player_shots", sounds[SOUND_SHOOT_PLAYER]},
                      {"kills", sounds[SOUND_EXPLODE]},
                      {"shield_changes", sounds[SOUND_SHIELD_CHANGE]}};
}
BENCHMARK(step_allocations)->Iterations(1);

// --- Recordings -----------------------------------------------------------------------------

// A real log, or one as large as quorvane-replay takes, with its events over and over.
std::vector<uint8_t> image_of(bool large) {
    constexpr size_t SEED_SIZE = 5;
    constexpr size_t LENGTH_AT = 71;
    std::vector<uint8_t> image = recorded_game("0036-ace-chain");
    const std::vector<uint8_t> events(image.begin() + REPLAY_HEADER_SIZE + SEED_SIZE, image.end());
    while (large && image.size() + events.size() <= RECORDING_SIZE_LIMIT) {
        image.insert(image.end(), events.begin(), events.end());
    }
    replay_write_32(&image[LENGTH_AT], static_cast<uint32_t>(image.size() - REPLAY_HEADER_SIZE));
    return image;
}

template <typename function>
void for_bytes(State& state, size_t bytes, function succeeds) {
    succeeds();  // memory that was never touched costs more than the work
    for ([[maybe_unused]] auto _ : state) {
        if (!succeeds()) {
            state.SkipWithError("the recording was refused");
            return;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
    state.SetLabel(std::to_string(bytes));
}

// The game's own reader.
void load(State& state) {
    const std::vector<uint8_t> image = image_of(state.range(0) != 0);
    const std::shared_ptr<replay> log(replay_init(), replay_destroy);
    for_bytes(state, image.size(), [&] {
        replay_reset(log.get(), 1);
        return replay_set_data(log.get(), image.data(), image.size()) == 0;
    });
}
BENCHMARK(load)->DenseRange(0, 1)->ArgName("large")->MinTime(0.5);

// quorvane-replay's reader: a file, and everything that is odd about its events.
void inspect(State& state) {
    const std::vector<uint8_t> image = image_of(state.range(0) != 0);
    const std::string path = std::filesystem::temp_directory_path() /
                             ("quorvane-bench-" + std::to_string(getpid()) + ".rpl");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(image.data()), std::ssize(image));
    for_bytes(state, image.size(), [&] {
        recording_file file;
        std::string reason;
        return recording_file_load(path, &file, &reason) == LOAD_OK;
    });
    std::filesystem::remove(path);
}
BENCHMARK(inspect)->DenseRange(0, 1)->ArgName("large")->MinTime(0.5);

void pack(State& state) {
    const std::vector<uint8_t> image = image_of(state.range(0) != 0);
    const std::shared_ptr<replay> log(replay_init(), replay_destroy);
    replay_set_data(log.get(), image.data(), image.size());
    log->event_count = log->loaded_count;  // as if just recorded
    for_bytes(state, image.size(), [&] {
        uint8_t* data = nullptr;
        size_t length = 0;
        replay_get_data(log.get(), &data, &length);
        std::free(data);
        return length == image.size();
    });
}
BENCHMARK(pack)->DenseRange(0, 1)->ArgName("large")->MinTime(0.5);

// --- Geometry and random numbers, against the platform's ------------------------------------

// Calls with pairs of arguments as games have them.
template <typename function>
void arithmetic(State& state, function call) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> coordinate(-15.0, 15.0);
    std::vector<vector> arguments(1024);
    for (vector& argument : arguments) {
        argument = {coordinate(random), coordinate(random)};
    }
    for ([[maybe_unused]] auto _ : state) {
        for (const vector& argument : arguments) {
            benchmark::DoNotOptimize(call(argument));
        }
    }
    state.SetItemsProcessed(state.iterations() * std::ssize(arguments));
}

#define COMPARE(name, own_expression, platform_expression)                       \
    BENCHMARK_CAPTURE(arithmetic, name##_own,                                    \
                      []([[maybe_unused]] vector v) { return own_expression; }); \
    BENCHMARK_CAPTURE(arithmetic, name##_platform,                               \
                      []([[maybe_unused]] vector v) { return platform_expression; })

double wrapped(double x, double m) { return x < 0.0 ? std::fmod(x, m) + m : std::fmod(x, m); }

std::mt19937 standard_generator;

COMPARE(math_sin, math_sin(v.x), std::sin(v.x));
COMPARE(math_cos, math_cos(v.x), std::cos(v.x));
COMPARE(math_vector_angle, math_vector_angle(v), wrapped(std::atan2(v.y, v.x), MATH_TWO_PI));
COMPARE(math_distance, math_distance(&v, nullptr), std::hypot(v.x, v.y));
COMPARE(math_wrap, math_wrap(v.x + MATH_TWO_PI, MATH_TWO_PI),
        wrapped(v.x + MATH_TWO_PI, MATH_TWO_PI));
COMPARE(genrand_int32, genrand_int32(), standard_generator());

}  // namespace
