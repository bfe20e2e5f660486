// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "course.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "sound.h"

namespace {

constexpr int32_t MS_PER_SECOND = 1000;
constexpr int32_t LIKENESS_STEP = 40;  // ms

// What a game's score was made of, sorted, each once.
std::vector<std::pair<int32_t, int32_t>> winnings(const game_course& course) {
    std::vector<std::pair<int32_t, int32_t>> found;
    for (const course_entry& entry : course.entries) {
        if (entry.points != 0) {
            found.emplace_back(entry.points, entry.time / LIKENESS_STEP);
        }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

}  // namespace

const char* course_kind_name(course_kind kind) {
    switch (kind) {
        case COURSE_SHOT:
            return "shot";
        case COURSE_HIT:
            return "hit";
        case COURSE_KILL:
            return "kill";
        case COURSE_CHAIN:
            return "chain";
        case COURSE_ABSORBED:
            return "absorbed";
        case COURSE_SHIELD:
            return "shield";
        default:
            return "end";
    }
}

course_watch::course_watch(const playback& watched)
    : run(watched), others(std::exchange(heard_sound, [this](uint32_t id) { hear(id); })) {}

course_watch::~course_watch() { heard_sound = others; }

// The points of an event are in the score when its sound is heard, and those of no later one.
void course_watch::hear(uint32_t sound) {
    const struct ship& player = run.game->players[0];
    const int32_t points = player.score - std::exchange(score, player.score);
    const int32_t chain_before = std::exchange(chain, player.chain_count);
    const auto add = [&](course_kind kind) {
        course.entries.push_back({run.game->time, kind, points});
    };
    switch (sound) {
        case SOUND_SHOOT_PLAYER:
            add(COURSE_SHOT);
            break;
        case SOUND_SHIELD_CHANGE:
            add(COURSE_SHIELD);
            break;
        case SOUND_SHIELD_HIT:
            add(COURSE_ABSORBED);
            break;
        case SOUND_CHAIN:
            add(COURSE_CHAIN);
            break;
        case SOUND_EXPLODE:  // heard of enemies that leave the field as well
            if (points != 0) {
                add(COURSE_KILL);
            } else if (chain_before != 0 && chain == 0) {
                add(COURSE_HIT);
            }
            break;
        default:
            break;
    }
}

// The scores of the seconds before `time` that are still to be told.
void course_watch::fill_scores(int64_t time, int32_t value) {
    while (int64_t(course.scores.size()) * MS_PER_SECOND < time &&
           course.scores.size() <= GAME_DURATION / MS_PER_SECOND) {
        course.scores.push_back(value);
    }
}

void course_watch::after_step() {
    fill_scores(run.game->time, run.score_before);
    if (run.end == RUN_SELF) {
        course.entries.push_back({run.game->time, COURSE_END, 0});
    }
}

void course_watch::finish() {
    const int64_t second = run.game->time / MS_PER_SECOND;
    fill_scores(second * MS_PER_SECOND + 1, run.score());
    if (run.end != RUN_SELF) {
        course.entries.push_back({run.game->time, COURSE_END, 0});
    }
}

game_course course_of(std::span<const uint8_t> image) {
    playback run(image);
    course_watch watch(run);
    while (run.step()) {
        watch.after_step();
    }
    watch.finish();
    return std::move(watch.course);
}

std::optional<double> likeness(const game_course& one, const game_course& other) {
    const auto ours = winnings(one);
    const auto theirs = winnings(other);
    const size_t fewer = std::min(ours.size(), theirs.size());
    if (fewer < LIKENESS_LEAST) {
        return std::nullopt;
    }
    std::vector<std::pair<int32_t, int32_t>> both;
    std::set_intersection(ours.begin(), ours.end(), theirs.begin(), theirs.end(),
                          std::back_inserter(both));
    return static_cast<double>(both.size()) / static_cast<double>(fewer);
}
