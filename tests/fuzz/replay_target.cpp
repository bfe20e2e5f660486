// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The two readers of recordings, the game's and the one that judges: both must accept the same
// files and find the same in them, and what the game writes again must come back and be signed.

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "fuzz.h"
#include "input.h"
#include "json_writer.h"
#include "recording_file.h"

namespace {

void read_by_both(const uint8_t* data, size_t size) {
    const memory_file file(data, size);
    const std::shared_ptr<replay> log(replay_init(), replay_destroy);
    const int32_t code = input_read_file(log.get(), file.path.c_str());
    recording_file judged_file;
    const recording& judged = judged_file.log;
    std::string reason;
    const load_status status = recording_file_load(file.path, &judged_file, &reason);
    assert(status == (code == 0 ? LOAD_OK : LOAD_BROKEN));
    assert(static_cast<size_t>(log->capacity) <= std::max(size, size_t{100}));
    if (code != 0) {
        assert(code < -100 && !reason.empty());
        return;
    }

    // The judge takes most events by tables; here is each of them.
    uint64_t duration = 0;
    std::array<uint64_t, 64> type_counts{};
    size_t at = REPLAY_HEADER_SIZE;
    for (int32_t i = 0; i < log->loaded_count; ++i) {
        event_record event{};
        const bool whole = read_event(judged.bytes, &at, &event);
        assert(whole && event.type == log->events[i].type && event.value == log->events[i].value);
        ++type_counts[event.type / 4];
        duration += event.type == REPLAY_EVENT_TICK && event.value < TIME_LIMIT ? event.value : 0;
    }
    assert(at == size && judged.bytes.size() == size);
    assert(judged.event_count == static_cast<uint64_t>(log->loaded_count));
    assert(judged.type_counts == type_counts && judged.duration == duration);
    assert(judged.name == log->player_name && judged.score == log->final_score);
    for (const std::string& shown : {printable(judged.name), json_string(judged.name)}) {
        assert(std::none_of(shown.begin(), shown.end(),
                            [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }));
    }
    in_words(judged.impossible);
    in_words(judged.remarks);

    log->event_count = log->loaded_count;
    uint8_t* image = nullptr;
    size_t length = 0;
    replay_get_data(log.get(), &image, &length);
    const memory_file saved(image, length);
    std::free(image);
    replay_salt salt;
    read_salt("", &salt, &reason);
    recording_file saved_file;
    const recording& again = saved_file.log;
    assert(recording_file_load(saved.path, &saved_file, &reason) == LOAD_OK);
    assert(signature_is_right(again, salt));
    assert(again.type_counts == type_counts && again.duration == duration);
    assert(again.name == judged.name && again.score == judged.score);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    read_by_both(data, size);
    const std::vector<uint8_t> image = as_recording(data, size);
    read_by_both(image.data(), image.size());
    return 0;
}
