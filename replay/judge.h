// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Judging a recording: bytes in, a record out. The game is played again as a fresh process plays
// it, whatever this process has judged before; nothing is printed, read or written on the way. For
// one thread at a time, since the game's random numbers are the process's: a judgement takes them
// from any game or playback that is going on. Whoever links this links quorvane_headless as well;
// without it nothing is heard, and a course has its scores and its end alone. A recording that is
// refused by a limit costs one look through its bytes, any other one at most 6,802 steps up to a
// stall; an operation of the game that finds no memory stops the process with an assertion.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "course.h"
#include "game_key.h"
#include "playback.h"
#include "recording.h"

// Where several would fit, the one that stands later goes before. No value is 0, so that nothing
// that was forgotten looks like a verdict.
enum verdict : int32_t {
    VERDICT_OK = 1,         // one that the program records, earns its score, and is signed
    VERDICT_BAD_SIGNATURE,  // the same, but not signed with the salt
    VERDICT_UNFINISHED,     // the score is that after the last step, but the game goes on there
    VERDICT_WRONG_SCORE,    // the game earns another score
    VERDICT_IMPOSSIBLE,     // the log has something that the program never records
    VERDICT_BROKEN,         // not a recording, or cut or damaged
};

const char* verdict_name(verdict verdict);  // "ok", "bad-signature" and so on

// What came of playing the game.
struct game_result {
    int32_t before;            // score before the last step
    int32_t after;             // and after it
    run_end end;               // never RUN_GOES_ON
    uint64_t frames;           // steps made
    int32_t time;              // game time of the last one, ms
    const char* lost_to;       // as loss_watch has it, "-" if the game did not end itself
    std::vector<uint8_t> key;  // game_key_watch's bytes; empty if the log is impossible
    game_course course;        // empty unless asked for
};

struct judgement {
    enum verdict verdict;
    std::string error;  // why it is broken; the rest is then empty
    recording log;      // of the bytes given, with reasons and remarks
    bool is_signed = false;
    std::optional<game_result> played;  // nothing if the log was refused unplayed
};

struct judge_options {
    replay_salt salt = built_in_salt();
    bool with_course = false;
};

// The bytes must outlive the judgement. Throws std::bad_alloc only.
judgement judge_recording(std::span<const uint8_t> bytes, const judge_options& options);
