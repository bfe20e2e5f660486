// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The course of a game: what happened when and what it brought, and the score second by second; and
// how alike the courses of two games are. Found from outside, by the sounds of a step and the score
// at each of them: the game keeps no such list. Sounds are heard where quorvane_headless is linked;
// elsewhere a course has its scores and its end alone.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "playback.h"

// No value is 0, so that nothing that was forgotten looks like a kind.
enum course_kind : int32_t {
    COURSE_SHOT = 1,  // the player fired
    COURSE_HIT,    // a shot of the player's destroyed an enemy of another colour than the chain's:
                   // the chain is broken, and there are no points
    COURSE_KILL,   // a shot of the player's destroyed an enemy, for points
    COURSE_CHAIN,  // a chain was completed; stands before the kill that did it
    COURSE_ABSORBED,  // a shot was taken in
    COURSE_SHIELD,    // the shield changed its colour
    COURSE_END,       // the game was over
};

// "shot", "hit", "kill", "chain", "absorbed", "shield", "end".
const char* course_kind_name(course_kind kind);

struct course_entry {
    int32_t time;  // game time of the step, ms
    course_kind kind;
    int32_t points;
};

struct game_course {
    std::vector<course_entry> entries;  // in the order of the game
    std::vector<int32_t> scores;  // after the last step at or before 0 s, 1 s, 2 s and so on, up
                                  // to the second in which the game ends (150 at most)
};

// Listens to a playback from its construction on; one at a time.
class course_watch {
public:
    explicit course_watch(const playback& watched);
    ~course_watch();
    course_watch(const course_watch&) = delete;
    course_watch& operator=(const course_watch&) = delete;

    void after_step();  // after each step of the playback
    void finish();      // after the last one
    game_course course;

private:
    void hear(uint32_t sound);
    void fill_scores(int64_t time, int32_t score);

    const playback& run;
    sound_listener others;  // put back at the end
    int32_t score = 0;      // at the last sound
    int32_t chain = 0;      // kills in the chain there
};

// The course of a recording that recording_read has accepted, whatever there is to say of it.
game_course course_of(std::span<const uint8_t> image);

// From 0 to 1: of the points and when they were won, in steps of 40 ms, the share of the game with
// fewer of them that the other has as well. Nothing if one has fewer than LIKENESS_LEAST of them.
// Says something about games with one seed only; docs/replay-format.md says what.
inline constexpr size_t LIKENESS_LEAST = 20;
std::optional<double> likeness(const game_course& one, const game_course& other);
