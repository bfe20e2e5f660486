// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Lets programs of several temperaments play games, several of each seed, alters copies of these
// games, and prints how alike strangers are and how alike copies: the table in
// docs/replay-format.md. All is drawn from fixed seeds, so a second run prints the same.
//
//     make_games [SEEDS [FOLDER]]    20 seeds; with a folder, the recordings are left there

#include <SDL.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "course.h"
#include "enemy.h"
#include "fpslimiter.h"
#include "game.h"
#include "headless.h"
#include "judge.h"
#include "mt19937.h"
#include "replay.h"

namespace {

using generator = std::mt19937;

uint32_t below(generator& random, uint32_t end) { return static_cast<uint32_t>(random() % end); }

// --- Games as lists of frames ---------------------------------------------------------------

struct frame {
    std::vector<replay_event> keys;
    uint32_t ms;
};

struct game_log {
    std::string name;
    uint32_t seed;
    uint32_t score;
    std::vector<frame> frames;
};

std::vector<uint8_t> image_of(const game_log& log) {
    const std::unique_ptr<replay, void (*)(replay*)> events(replay_init(), replay_destroy);
    replay_add_event(events.get(), REPLAY_EVENT_SEED, log.seed);
    for (const frame& frame : log.frames) {
        for (const replay_event& key : frame.keys) {
            replay_add_event(events.get(), key.type, key.value);
        }
        replay_add_event(events.get(), REPLAY_EVENT_TICK, frame.ms);
    }
    replay_set_player_name(events.get(), log.name.c_str());
    replay_set_final_score(events.get(), log.score);
    uint8_t* data = nullptr;
    size_t length = 0;
    replay_get_data(events.get(), &data, &length);
    std::vector<uint8_t> image(data, data + length);
    std::free(data);
    return image;
}

// --- Players --------------------------------------------------------------------------------

enum class taste { ANY, SAME, OTHER };  // which enemies to shoot at, by the shield's colour

struct temperament {
    const char* name;
    uint32_t reaction;  // frames from one look at the game to the next, on average
    double aim_error;   // radians at most
    double caution;     // room left to what kills, beyond the least; 0: none is looked for
    double home;        // distance from the hole that is sought
    double wandering;   // how much a move at random is worth
    taste color;
    bool holds_fire_key;
};

constexpr temperament TEMPERAMENTS[] = {
    {"ace", 2, 0.05, 0.25, 2.5, 0, taste::ANY, false},
    {"same", 3, 0.08, 0.30, 2.0, 0, taste::SAME, false},
    {"other", 3, 0.08, 0.30, 3.0, 0, taste::OTHER, false},
    {"slow", 8, 0.15, 0.45, 2.5, 0, taste::ANY, false},
    {"hoverer", 4, 0.10, 0.30, 1.5, 0, taste::ANY, true},
    {"wanderer", 3, 0.12, 0.25, 4.0, 4, taste::SAME, false},
    {"careless", 6, 0.20, 0.10, 4.0, 2, taste::OTHER, true},
    {"masher", 5, 3.00, 0.00, 3.0, 9, taste::ANY, true},
};

constexpr int STEPS = 25;  // of a look ahead
constexpr int STEP_MS = 40;
constexpr double SPEED = 2.5;  // the player's

// Something that kills at a touch, and where it is going to be.
struct threat {
    bool is_shot;  // of an enemy, that a shield of its colour takes in
    int32_t color;
    int harmless_steps;
    vector places[STEPS];
};

class player {
public:
    player(const temperament& temperament, uint32_t seed) : kind(temperament), random(seed) {}

    // The keys to be down in the next frame.
    std::array<bool, KEY_SPECIAL> keys(const game& game) {
        std::array<bool, KEY_SPECIAL> down{};
        const ship& self = game.players[0];
        if (wait-- == 0) {
            wait = kind.reaction / 2 + below(random, kind.reaction + 1);
            look(game);
            down[KEY_SHIELD] = color != self.color;
        }
        const double turn = std::remainder(aim - self.angle, MATH_TWO_PI);
        down[KEY_TURN_LEFT] = turn > 0.05;
        down[KEY_TURN_RIGHT] = turn < -0.05;
        down[KEY_FIRE] = kind.holds_fire_key || (has_target && std::fabs(turn) < 0.08);
        down[KEY_FORWARD] = move % 3 == 1;
        down[KEY_BACKWARD] = move % 3 == 2;
        down[KEY_STRAFE_LEFT] = move / 3 == 1;
        down[KEY_STRAFE_RIGHT] = move / 3 == 2;
        return down;
    }

private:
    void look(const game& game) {
        see_threats(game);
        take_aim(game);
        if (below(random, 10) == 0) {
            whim = static_cast<int>(below(random, 9));
        }
        const ship& self = game.players[0];
        double least = 1e9;
        const int32_t other = 1 - self.color;
        const bool may_switch = game.time - last_switch > 250;
        for (const int32_t shield : {self.color, other}) {
            for (int choice = 0; choice < 9 && (shield == self.color || may_switch); ++choice) {
                for (const int steps : {3, 10}) {
                    const double cost = cost_of(game, choice, steps, shield);
                    if (cost < least) {
                        least = cost;
                        move = choice;
                        color = shield;
                    }
                }
            }
        }
        last_switch = color != self.color ? game.time : last_switch;
    }

    // Enemies fly as the game has them fly; shots as they do, in longer steps.
    void see_threats(const game& game) {
        const vector self = game.players[0].position;
        threats.clear();
        for (int32_t i = 0; i < game.ship_count; ++i) {
            ship enemy = game.ships[i];
            if (enemy.alive != 0 && math_distance(&enemy.position, &self) < 7.0) {
                threat& threat = threats.emplace_back();
                for (vector& place : threat.places) {
                    place = enemy.position;
                    enemy.age += STEP_MS;
                    enemy_place_ship(game.enemy_handler, &enemy);
                }
            }
        }
        for (int32_t i = 0; i < game.shot_count; ++i) {
            const shot& shot = game.shots[i];
            if (shot.active == 0 || math_distance(&shot.position, &self) > 7.0) {
                continue;
            }
            threat& threat = threats.emplace_back();
            threat.is_shot = shot.from_enemy == 1;
            threat.color = shot.color;
            threat.harmless_steps = std::max(0, (200 - shot.age) / STEP_MS);
            vector at = shot.position;
            vector velocity = shot.velocity;
            for (vector& place : threat.places) {
                place = at;
                const double d2 = std::max(1.0, at.x * at.x + at.y * at.y);
                const double pull = d2 > 16.0 ? 0.0 : (d2 > 4.0 ? 48.0 : 40.0) / d2;
                velocity.x -= pull * at.x * STEP_MS / 1000;
                velocity.y -= pull * at.y * STEP_MS / 1000;
                at.x += velocity.x * STEP_MS / 1000;
                at.y += velocity.y * STEP_MS / 1000;
            }
        }
    }

    void take_aim(const game& game) {
        const ship& self = game.players[0];
        double least = 1e9;
        has_target = false;
        for (int32_t i = 0; i < game.ship_count; ++i) {
            ship enemy = game.ships[i];
            if (enemy.alive == 0) {
                continue;
            }
            enemy.age += static_cast<int32_t>(
                100 * std::min(10.0, math_distance(&enemy.position, &self.position)));
            enemy_place_ship(game.enemy_handler, &enemy);
            const vector way = {enemy.position.x - self.position.x,
                                enemy.position.y - self.position.y};
            const double angle = math_vector_angle(way);
            const bool is_same = enemy.color == self.color;
            const bool breaks_chain = self.chain_count % 3 != 0 && enemy.color != self.chain_color;
            const double cost =
                std::fabs(std::remainder(angle - self.angle, MATH_TWO_PI)) * 1.5 +
                std::hypot(way.x, way.y) * 0.3 + (breaks_chain ? 3.0 : 0.0) +
                (kind.color == taste::ANY || is_same == (kind.color == taste::SAME) ? 0.0 : 2.0);
            if (cost < least) {
                least = cost;
                has_target = true;
                aim = angle;
                wanted = kind.color == taste::ANY     ? self.color
                         : kind.color == taste::OTHER ? 1 - enemy.color
                                                      : enemy.color;
            }
        }
        aim += (below(random, 2001) / 1000.0 - 1.0) * kind.aim_error;
    }

    double cost_of(const game& game, int choice, int steps, int32_t shield) const {
        const ship& self = game.players[0];
        const double ahead = choice % 3 == 1 ? SPEED : choice % 3 == 2 ? -SPEED : 0.0;
        const double aside = choice / 3 == 1 ? SPEED : choice / 3 == 2 ? -SPEED : 0.0;
        const double x = std::cos(self.angle);
        const double y = std::sin(self.angle);
        const vector velocity = {ahead * x - aside * y, ahead * y + aside * x};
        vector at = self.position;
        double cost = (choice == whim ? 0.0 : kind.wandering) + (shield == self.color ? 0.0 : 0.5) +
                      (shield == wanted ? 0.0 : 3.0);
        for (int step = 0; step < STEPS; ++step) {
            for (const threat& threat : threats) {
                const bool is_taken_in = threat.is_shot && threat.color == shield;
                if (kind.caution == 0.0 || step < threat.harmless_steps || is_taken_in) {
                    continue;
                }
                const double reach = 0.2 + kind.caution;
                const double dx = threat.places[step].x - at.x;
                const double dy = threat.places[step].y - at.y;
                if (dx * dx + dy * dy < reach * reach) {
                    const double d = std::hypot(dx, dy);
                    cost += ((reach - d) / reach * 100 + (d < 0.3 ? 1000 : 0)) / (step + 2);
                }
            }
            if (step < steps) {
                at.x += velocity.x * STEP_MS / 1000;
                at.y += velocity.y * STEP_MS / 1000;
            }
            const double d = std::hypot(at.x, at.y);
            const double edge = game.radius - 0.1;
            cost += d < 1.1 ? 200.0 : d > edge ? 200.0 : d < 1.3 ? 5.0 * (1.3 - d) : 0.0;
        }
        const double home = std::min(kind.home, (1.0 + game.radius) / 2);
        return cost + std::fabs(std::hypot(at.x, at.y) - home) * 2;
    }

    const temperament& kind;
    generator random;
    std::vector<threat> threats;
    uint32_t wait = 0;
    double aim = MATH_HALF_PI;
    bool has_target = false;
    int32_t wanted = 0;
    int32_t color = 0;
    int32_t last_switch = 0;
    int move = 0;  // forward and back in thirds, left and right in ninths
    int whim = 0;
};

constexpr SDLKey KEYS[] = {SDLK_w, SDLK_s, SDLK_LEFT,  SDLK_RIGHT,
                           SDLK_a, SDLK_d, SDLK_SPACE, SDLK_LCTRL};

// A game as the program plays and records it, paced by its own limiter: each frame takes some
// milliseconds of work, sleeps may last one longer, and now and then something else holds it up.
// It begins with the first `kept` frames of another one, if one is given.
game_log play(uint32_t seed, const temperament& kind, uint32_t player_seed,
              const game_log* start = nullptr, size_t kept = 0) {
    generator random(player_seed + 1);
    player player(kind, player_seed);
    headless_services = {};
    headless_services.ticks = 1000000;
    headless_services.on_delay = [&random](uint32_t) {
        headless_services.ticks += below(random, 2);
    };
    const std::shared_ptr<input> input(input_init(nullptr), input_destroy);
    input->seed = seed;
    init_genrand(seed);
    const std::shared_ptr<game> game(game_init(input.get(), GAME_SHIP_COUNT, 800, 600),
                                     game_destroy);
    game_log log{kind.name, seed, 0, {}};
    std::array<bool, KEY_SPECIAL> down{};
    while (game_is_over(game.get()) == 0) {
        const size_t first = static_cast<size_t>(input->replay->event_count);
        if (log.frames.size() < kept) {
            log.frames.push_back(start->frames[log.frames.size()]);
            for (const replay_event& key : log.frames.back().keys) {
                input_replay_event_cb(key.type, key.value, input.get());
                down.at(key.value) = key.type == REPLAY_EVENT_KEY_DOWN;
            }
            input->elapsed += log.frames.back().ms;
            input->base_ticks = headless_services.ticks - input->elapsed;
            game_step(game.get(), static_cast<int32_t>(input->elapsed));
            continue;
        }
        const auto wanted = player.keys(*game);
        for (size_t slot = 0; slot < wanted.size(); ++slot) {
            if (wanted[slot] != down[slot]) {
                SDL_keysym key{};
                key.sym = KEYS[slot];
                input_key_event(input.get(), &key, wanted[slot] ? 1 : 0);
            }
        }
        down = wanted;
        headless_services.ticks += 2 + below(random, 4);
        headless_services.ticks += below(random, 500) == 0 ? below(random, 60) : 0;
        game_step(game.get(), input_tick(input.get()));
        const replay_event* events = input->replay->events;
        const size_t last = static_cast<size_t>(input->replay->event_count) - 1;
        log.frames.push_back(
            {{events + std::max<size_t>(first, 1), events + last}, events[last].value});
    }
    log.score = static_cast<uint32_t>(game_get_score(game.get()));
    headless_services = {};
    return log;
}

// --- Games as they are compared -------------------------------------------------------------

struct judged_game {
    game_log log;
    std::vector<uint8_t> key;
    game_course course;
};

int refused = 0;

// Without what an altered log has behind its end, and with the score that it earns.
judged_game judged(game_log log, const std::string& path) {
    const judge_options options{built_in_salt(), true};
    std::vector<uint8_t> image = image_of(log);
    if (const auto played = judge_recording(image, options).played) {
        log.frames.resize(static_cast<size_t>(played->frames));
        log.score = static_cast<uint32_t>(played->end == RUN_SELF ? played->after : played->before);
    }
    image = image_of(log);
    const judgement last = judge_recording(image, options);
    refused += last.verdict != VERDICT_OK ? 1 : 0;
    if (!path.empty()) {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(image.data()), std::ssize(image));
    }
    return last.played ? judged_game{log, last.played->key, last.played->course}
                       : judged_game{log, {}, {}};
}

// --- Alterations ----------------------------------------------------------------------------

using change = void (*)(game_log&, size_t);  // at a frame that is not the first or the last

void add_empty_frame(game_log& log, size_t at) {
    log.frames.insert(log.frames.begin() + static_cast<std::ptrdiff_t>(at) + 1, frame{{}, 0});
}

void move_millisecond(game_log& log, size_t at) {
    if (log.frames[at].ms > 0) {
        --log.frames[at].ms;
        ++log.frames[at + 1].ms;
    }
}

// Twenty changes at random places; with `care`, those of forty that do not lower the score.
game_log changed(const game_log& original, change apply, bool care, generator& random) {
    game_log log = original;
    for (int tries = care ? 40 : 20; tries > 0; --tries) {
        game_log next = log;
        apply(next, 1 + below(random, static_cast<uint32_t>(log.frames.size()) - 3));
        if (care) {
            const std::vector<uint8_t> image = image_of(next);
            const auto played = judge_recording(image, {}).played;
            next.score = played ? static_cast<uint32_t>(played->after) : 0;
        }
        if (next.score >= log.score) {
            log = std::move(next);
        }
    }
    return log;
}

constexpr key_slot NOTHING = KEY_SPECIAL;

// In every second frame in which none of `added` is down but `held` is, they go down, and up again
// with the next.
game_log with_keys(game_log log, std::initializer_list<key_slot> added, key_slot held) {
    std::array<bool, KEY_SLOT_COUNT> down{};
    down[NOTHING] = true;
    bool pressed = false;
    for (frame& frame : log.frames) {
        for (const key_slot slot : added) {
            if (pressed) {
                frame.keys.insert(frame.keys.begin(),
                                  {REPLAY_EVENT_KEY_UP, static_cast<uint32_t>(slot)});
            }
        }
        for (const replay_event& key : frame.keys) {
            down.at(key.value) = key.type == REPLAY_EVENT_KEY_DOWN;
        }
        pressed =
            !pressed && down[held] &&
            std::none_of(added.begin(), added.end(), [&](key_slot slot) { return down[slot]; });
        for (const key_slot slot : added) {
            if (pressed) {
                frame.keys.push_back({REPLAY_EVENT_KEY_DOWN, static_cast<uint32_t>(slot)});
            }
        }
    }
    return log;
}

// All that follows comes later: by a frame that takes longer, the second one or that in which the
// first enemy appears, until which nothing moves but the player.
game_log delayed(game_log log, uint32_t ms, bool at_first_enemy) {
    size_t at = 1;
    if (at_first_enemy) {
        const std::vector<uint8_t> image = image_of(log);
        playback run(image);
        while (run.step() && run.game->enemy_handler->alive_count == 0) {
        }
        at = static_cast<size_t>(run.frames) - 1;
    }
    log.frames[at].ms += ms;
    return log;
}

// The first part of a game, and then another player, of the next temperament.
game_log spliced(const game_log& log, size_t percent, size_t kind, generator& random) {
    const size_t kept = log.frames.size() * percent / 100;
    return play(log.seed, TEMPERAMENTS[(kind + 1) % std::size(TEMPERAMENTS)],
                below(random, 1 << 30), &log, kept);
}

game_log renamed(game_log log) {
    log.name = "somebody else";
    return log;
}

// --- The table ------------------------------------------------------------------------------

constexpr double THRESHOLD = 0.2;

struct row {
    std::string name;
    int pairs = 0;
    int other_key = 0;
    int as_good = 0;              // the second game has at least as many points as the first
    std::vector<double> alike{};  // the likeness of those that have one
    int found = 0;                // of all, and
    int found_as_good = 0;  // of those that are as good, have a likeness of THRESHOLD at least
};

// Nearest rank.
double quantile(const std::vector<double>& sorted, double share) {
    const double last = static_cast<double>(sorted.size()) - 1.0;
    return sorted.empty() ? NAN : sorted[static_cast<size_t>(share * last + 0.5)];
}

void add_pair(row* row, const judged_game& one, const judged_game& other) {
    const bool is_as_good = other.log.score >= one.log.score;
    ++row->pairs;
    row->other_key += one.key != other.key ? 1 : 0;
    row->as_good += is_as_good ? 1 : 0;
    if (const auto share = likeness(one.course, other.course)) {
        row->alike.push_back(*share);
        row->found += *share >= THRESHOLD ? 1 : 0;
        row->found_as_good += is_as_good && *share >= THRESHOLD ? 1 : 0;
    }
}

void print_row(row row) {
    std::sort(row.alike.begin(), row.alike.end());
    std::printf("| %s | %d | %zu |", row.name.c_str(), row.pairs, row.alike.size());
    for (const double share : {0.0, 0.05, 0.5, 0.95, 0.99, 1.0}) {
        std::printf(" %.2f |", quantile(row.alike, share));
    }
    const double percent = 100.0 / row.pairs;
    std::printf(" %.0f %% | %.1f %% | %.0f %% | %.1f %% |\n", row.other_key * percent,
                row.found * percent, row.as_good * percent,
                100.0 * row.found_as_good / row.as_good);
}

}  // namespace

int main(int argument_count, char** arguments) {
    constexpr uint32_t FIRST_SEED = 1767225600;
    constexpr size_t KINDS = std::size(TEMPERAMENTS);
    const uint32_t seeds =
        argument_count > 1 ? static_cast<uint32_t>(std::strtoul(arguments[1], nullptr, 10)) : 20;
    const std::string folder = argument_count > 2 ? std::string(arguments[2]) + "/" : "";
    const auto path = [&](const std::string& name) {
        return folder.empty() ? "" : folder + name + ".rpl";
    };
    std::vector<row> rows(2);  // strangers, and copies in the order in which they are made
    rows[0].name = "strangers, other players";
    rows[1].name = "strangers, the same player";
    std::array<std::vector<double>, KINDS> scores;
    std::array<std::vector<double>, KINDS> times;
    for (uint32_t seed = FIRST_SEED; seed < FIRST_SEED + seeds; ++seed) {
        generator random(seed);
        std::vector<judged_game> games;
        for (size_t i = 0; i < 2 * KINDS; ++i) {
            const size_t kind = i % KINDS;
            const std::string name = std::to_string(seed) + "-" + std::to_string(i);
            games.push_back(
                judged(play(seed, TEMPERAMENTS[kind], below(random, 1 << 30)), path(name)));
            const judged_game& game = games.back();
            scores[kind].push_back(game.log.score);
            times[kind].push_back(game.course.entries.back().time / 1000.0);
            for (size_t k = 0; k + 1 < games.size(); ++k) {
                add_pair(k % KINDS == kind ? &rows[1] : &rows[0], games[k], game);
            }
            if (game.log.score < 1000) {
                continue;  // nobody copies it
            }
            size_t number = 1;
            const auto copy = [&](const std::string& what, game_log log) {
                if (++number == rows.size()) {
                    rows.push_back({.name = what});
                }
                add_pair(&rows[number], game,
                         judged(std::move(log), path(name + "-" + std::to_string(number - 1))));
            };
            const game_log& log = game.log;
            copy("another name", renamed(log));
            copy("forward with back", with_keys(log, {KEY_FORWARD}, KEY_BACKWARD));
            copy("left with right", with_keys(log, {KEY_TURN_LEFT, KEY_TURN_RIGHT}, NOTHING));
            copy("20 frames of 0 ms, blindly", changed(log, add_empty_frame, false, random));
            copy("20 frames of 0 ms, with care", changed(log, add_empty_frame, true, random));
            copy("20 times 1 ms moved, blindly", changed(log, move_millisecond, false, random));
            copy("20 times 1 ms moved, with care", changed(log, move_millisecond, true, random));
            for (const uint32_t ms : {20, 40, 100}) {
                const std::string time = std::to_string(ms) + " ms later";
                copy(time + " from the start", delayed(log, ms, false));
                copy(time + " from the first enemy", delayed(log, ms, true));
            }
            for (const size_t percent : {25, 50, 75, 90}) {
                copy("spliced at " + std::to_string(percent) + " %",
                     spliced(log, percent, kind, random));
            }
        }
    }
    std::printf("| Player | Games | Least score | Median | Most | Least s | Median | Most |\n");
    for (size_t kind = 0; kind < KINDS; ++kind) {
        std::printf("| %s | %zu |", TEMPERAMENTS[kind].name, scores[kind].size());
        for (std::vector<double>* values : {&scores[kind], &times[kind]}) {
            std::sort(values->begin(), values->end());
            std::printf(" %.0f | %.0f | %.0f |", values->front(), quantile(*values, 0.5),
                        values->back());
        }
        std::printf("\n");
    }
    std::printf(
        "\n| Pairs | n | defined | min | 5 %% | median | 95 %% | 99 %% | max "
        "| other key | found | as good | of those found |\n");
    for (const row& row : rows) {
        print_row(row);
    }
    std::printf("\n%d recordings refused\n", refused);
    return refused == 0 ? 0 : 1;
}
