// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "judge.h"

#include <utility>

#include "loss.h"

namespace {

game_result play(recording* log, bool with_course) {
    playback run(log->bytes);
    std::optional<course_watch> course;
    if (with_course) {
        course.emplace(run);
    }
    game_key_watch key(log->first_seed.value_or(0));
    loss_watch loss;
    const char* lost_to = "-";
    bool stepped = true;
    while (stepped) {
        loss.remember(*run.game);
        stepped = run.step();
        if (stepped) {
            if (run.end == RUN_SELF) {
                lost_to = loss.cause(*run.game);  // before the watch forgets how it was
            }
            key.take(*run.game);
            if (course) {
                course->after_step();
            }
        }
    }
    if (run.end == RUN_SELF && run.events < log->event_count) {
        log->impossible.push_back(
            {"an event after the game's end", log->event_count - run.events, run.events});
    }
    game_result result{run.score_before, run.score(), run.end, run.frames,
                       run.game->time,   lost_to,     {},      {}};
    if (log->impossible.empty()) {
        result.key = std::move(key.bytes);
    }
    if (course) {
        course->finish();
        result.course = std::move(course->course);
    }
    return result;
}

verdict verdict_of(const judgement& found) {
    if (!found.log.impossible.empty()) {
        return VERDICT_IMPOSSIBLE;
    }
    const bool before = found.log.score == static_cast<uint32_t>(found.played->before);
    const bool after = found.log.score == static_cast<uint32_t>(found.played->after);
    if (!before && !after) {
        return VERDICT_WRONG_SCORE;
    }
    // A game that ends itself is recorded up to the step that ends it; one that is ended by Escape
    // or by closing the window, up to a frame whose step was left out. So the score before the last
    // step is good, whatever that step does here, but not the one after a step behind which the
    // game goes on.
    if (!before && found.played->end != RUN_SELF) {
        return VERDICT_UNFINISHED;
    }
    return found.is_signed ? VERDICT_OK : VERDICT_BAD_SIGNATURE;
}

}  // namespace

const char* verdict_name(verdict verdict) {
    switch (verdict) {
        case VERDICT_OK:
            return "ok";
        case VERDICT_BAD_SIGNATURE:
            return "bad-signature";
        case VERDICT_UNFINISHED:
            return "unfinished";
        case VERDICT_WRONG_SCORE:
            return "wrong-score";
        case VERDICT_IMPOSSIBLE:
            return "impossible";
        default:
            return "broken";
    }
}

judgement judge_recording(std::span<const uint8_t> bytes, const judge_options& options) {
    judgement found{VERDICT_BROKEN, "", {}, false, std::nullopt};
    found.error = recording_read(bytes, &found.log);
    if (!found.error.empty()) {
        found.log = {};
        return found;
    }
    if (!found.log.not_worth_playing) {
        found.played = play(&found.log, options.with_course);
    }
    found.is_signed = signature_is_right(found.log, options.salt);
    found.verdict = verdict_of(found);
    return found;
}
