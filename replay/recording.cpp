// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "recording.h"

#include <algorithm>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "fpslimiter.h"
#include "input.h"
#include "json_writer.h"
#include "sha1.h"

namespace {

// Offsets in the header.
constexpr size_t SIGNATURE_AT = 6;
constexpr size_t SIGNED_FROM = 26;
constexpr size_t NAME_AT = 31;
constexpr size_t CREATED_AT = 67;

constexpr const char* TYPE_NAMES[] = {nullptr,    "seed",    "tick",   "key_up",
                                      "key_down", "mouse_x", "mouse_y"};

// Frame times that need no remark, ms.
constexpr uint32_t SHORTEST_USUAL = 15;
constexpr uint32_t LONGEST_USUAL = 100;

// The keys of one slot that may be down, at least and at most: a key can be down from before the
// game, and a slot with two keys can be pressed twice.
struct keys_down {
    int keys;  // that the slot has
    int least = 0;
    int most = keys;

    constexpr bool can(int change) const { return least + change <= keys && most + change >= 0; }
    constexpr keys_down changed(int change) const {
        return {keys, std::clamp(least + change, 0, keys), std::clamp(most + change, 0, keys)};
    }

    // As a small number.
    constexpr uint8_t state() const { return static_cast<uint8_t>(keys * 9 + least * 3 + most); }
    static constexpr keys_down of(uint8_t state) { return {state / 9, state / 3 % 3, state % 3}; }
};
constexpr size_t STATE_COUNT = 27;

constexpr int64_t FRAME_MS = 1000 / FPSLIMITER_RATE;

constexpr uint64_t keys_allowed(uint32_t last_tick, uint32_t tick) {
    return KEY_BURST + KEYS_A_MS * (uint64_t{last_tick} + tick);
}

// Nearly all of a log is frames of usual length and keys that their slots can give, two bytes each,
// of which there is nothing to say. Their order is the player's, so that a processor cannot guess
// it: tables tell them from the rest without a branch for each.
constexpr uint8_t UNUSUAL = STATE_COUNT;
constexpr size_t NO_SLOT = KEY_SPECIAL;       // for frames
constexpr size_t UNUSUAL_SLOT = NO_SLOT + 1;  // for all else, in the state UNUSUAL

struct usual_events {
    uint8_t kind[256];                 // of a head byte: frame, release, press, other
    uint8_t slot[4][256];              // of a kind and a value
    uint8_t next[4][STATE_COUNT + 1];  // of a kind and the slot's state
};
constexpr usual_events USUAL = [] {
    usual_events tables{};
    std::fill(std::begin(tables.kind), std::end(tables.kind), uint8_t{3});
    for (uint8_t kind = 0; kind < 4; ++kind) {
        std::fill(std::begin(tables.slot[kind]), std::end(tables.slot[kind]),
                  uint8_t{UNUSUAL_SLOT});
        std::fill(std::begin(tables.next[kind]), std::end(tables.next[kind]), UNUSUAL);
        tables.kind[(REPLAY_EVENT_TICK | 1) + 4 * kind] = kind;
        for (uint8_t state = 0; kind < 3 && state < STATE_COUNT; ++state) {
            const keys_down keys = keys_down::of(state);
            const int change = kind == 0 ? 0 : kind == 1 ? -1 : 1;
            if (keys.can(change)) {
                tables.next[kind][state] = keys.changed(change).state();
            }
        }
    }
    for (uint32_t ms = SHORTEST_USUAL; ms <= LONGEST_USUAL; ++ms) {
        tables.slot[0][ms] = NO_SLOT;
    }
    for (uint8_t slot = 0; slot < KEY_SPECIAL; ++slot) {
        tables.slot[1][slot] = tables.slot[2][slot] = slot;
    }
    return tables;
}();
static_assert(REPLAY_EVENT_KEY_UP == REPLAY_EVENT_TICK + 4 &&
              REPLAY_EVENT_KEY_DOWN == REPLAY_EVENT_TICK + 8);

struct inspector {
    recording& log;
    uint8_t slots[UNUSUAL_SLOT + 1];  // states
    uint64_t frames_end = 0;          // index of the event behind the last frame

    // How far the frames so far are ahead of fifty a second, and the least that it ever was; ms.
    int64_t ahead = 0;
    int64_t least_ahead = 0;
    uint64_t keys = 0;       // of this frame so far
    uint32_t last_tick = 0;  // ms

    explicit inspector(recording* recording) : log(*recording) {
        constexpr int KEYS[] = {2, 2, 1, 1, 1, 1, 2, 2, 0};  // of the slots, and of NO_SLOT
        std::transform(std::begin(KEYS), std::end(KEYS), slots,
                       [](int down) { return keys_down{down}.state(); });
        slots[UNUSUAL_SLOT] = UNUSUAL;
    }

    void note(std::vector<finding>* findings, const char* text) const {
        const auto known = std::find_if(findings->begin(), findings->end(),
                                        [text](const finding& f) { return f.text == text; });
        if (known != findings->end()) {
            ++known->count;
        } else {
            findings->push_back({text, 1, log.event_count});
        }
    }
    void impossible(const char* text) const { note(&log.impossible, text); }
    void remark(const char* text) const { note(&log.remarks, text); }
    void not_worth_playing(const char* text) const {
        impossible(text);
        log.not_worth_playing = true;
    }

    void take_key(const event_record& event) {
        ++keys;
        if (event.value >= KEY_SPECIAL) {
            impossible("a key slot of 8 or more");
            return;
        }
        const keys_down down = keys_down::of(slots[event.value]);
        const int change = event.type == REPLAY_EVENT_KEY_DOWN ? 1 : -1;
        if (!down.can(change)) {
            remark("a press or release that the keys of its slot cannot give");
        }
        slots[event.value] = down.changed(change).state();
    }

    // Takes usual events (see below) up to the first other one, and returns the place behind them.
    size_t take_usual_events(const uint8_t* bytes, size_t at, size_t size) {
        // Copies that the compiler can keep in registers.
        int64_t now_ahead = ahead;
        int64_t now_least = least_ahead;
        uint64_t now_keys = keys;
        uint32_t now_last = last_tick;
        const bool overflows = log.duration + LONGEST_USUAL * (size - at) >= TIME_LIMIT;
        if (frames_end == 0 || log.steps_unseeded || overflows) {
            return at;
        }
        uint64_t counts[] = {0, 0, 0};  // frames, releases, presses
        for (; size - at >= 2; at += 2) {
            const uint8_t value = bytes[at + 1];
            const uint8_t kind = USUAL.kind[bytes[at]];
            uint8_t& state = slots[USUAL.slot[kind][value]];
            const uint8_t next = USUAL.next[kind][state];
            if (next == UNUSUAL) {
                break;
            }
            if (kind == 0) {
                if (now_ahead + FRAME_MS - value - now_least > MOST_CAUGHT_UP ||
                    now_keys > keys_allowed(now_last, value)) {
                    break;
                }
                now_ahead += FRAME_MS - value;
                now_least = std::min(now_least, now_ahead);
                now_keys = 0;
                now_last = value;
            } else {
                ++now_keys;
            }
            state = next;
            ++counts[kind];
            log.duration += kind == 0 ? value : 0;
            frames_end =
                kind == 0 ? log.event_count + counts[0] + counts[1] + counts[2] : frames_end;
        }
        ahead = now_ahead;
        least_ahead = now_least;
        keys = now_keys;
        last_tick = now_last;
        for (size_t kind = 0; kind < std::size(counts); ++kind) {
            log.type_counts[REPLAY_EVENT_TICK / 4 + kind] += counts[kind];
            log.event_count += counts[kind];
        }
        return at;
    }

    void take_limits(uint32_t ms, bool is_first) {
        if (keys > keys_allowed(last_tick, ms)) {
            not_worth_playing("more keys in a frame than anybody can press");
        }
        keys = 0;
        last_tick = ms;
        ahead += is_first ? 0 : FRAME_MS - int64_t{ms};
        if (ahead - least_ahead > MOST_CAUGHT_UP) {
            not_worth_playing("more frames than the time between them has room for");
            least_ahead = ahead;
        }
        least_ahead = std::min(least_ahead, ahead);
    }

    void take_tick(uint32_t ms) {
        const bool is_first = frames_end == 0;
        take_limits(ms, is_first);
        frames_end = log.event_count + 1;
        log.steps_unseeded |= log.type_counts[REPLAY_EVENT_SEED / 4] == 0;
        if (is_first && ms != 0) {
            impossible("a first frame time other than 0");
        }
        if (!is_first && ms < SHORTEST_USUAL) {
            remark("a frame time below 15 ms");
        }
        if (ms > LONGEST_USUAL) {
            remark("a frame time above 100 ms");
        }
        if (ms >= TIME_LIMIT) {
            impossible("a frame time of 2^31 ms or more, where a playback ends");
            return;
        }
        if (log.duration < TIME_LIMIT && log.duration + ms >= TIME_LIMIT) {
            impossible("a game time of 2^31 ms or more, where a playback ends");
        }
        log.duration += ms;
    }

    void take(const event_record& event) {
        uint64_t& type_count = log.type_counts[event.type / 4];
        ++type_count;
        if (log.event_count == 0 && event.type == REPLAY_EVENT_SEED) {
            log.first_seed = event.value;
        }
        if (event.width != shortest_width(event.value)) {
            impossible("a value not in its shortest form");
        }
        switch (event.type) {
            case REPLAY_EVENT_SEED:
                if (type_count > 1) {
                    not_worth_playing("a second seed");
                }
                break;
            case REPLAY_EVENT_TICK:
                take_tick(event.value);
                break;
            case REPLAY_EVENT_KEY_UP:
            case REPLAY_EVENT_KEY_DOWN:
                take_key(event);
                break;
            case REPLAY_EVENT_MOUSE_X:
            case REPLAY_EVENT_MOUSE_Y:
                impossible("a mouse event");
                break;
            default:
                impossible("an event of unknown type");
                break;
        }
        if (log.event_count == 0 && event.type != REPLAY_EVENT_SEED) {
            impossible("does not begin with a seed");
        }
        ++log.event_count;
    }

    void finish() {
        constexpr int64_t SLACK = 2;  // s; both times are cut to whole seconds
        constexpr int64_t DAY = 86400;
        if (frames_end == 0) {
            log.impossible.push_back({"no frame", 1, 0});
        } else if (frames_end < log.event_count) {
            log.impossible.push_back(
                {"an event after the last frame", log.event_count - frames_end, frames_end});
        }
        // The seed is the time at which the game began. The file was made when it had ended and the
        // last screen was left.
        const auto seconds = static_cast<int64_t>(log.duration / 1000);
        const int64_t waited = int64_t{log.created} - log.first_seed.value_or(0) - seconds;
        if (waited < -SLACK || waited > DAY) {
            log.remarks.push_back({"a seed that is not the time at which the game began", 1, 0});
        }
    }
};

const char* header_error_text(int32_t error) {
    switch (error) {
        case REPLAY_ERROR_MAGIC:
            return "no recording: it does not begin with QRVNPL";
        case REPLAY_ERROR_LENGTH:
            return "cut or damaged: the header's length of the events is not the file's";
        case REPLAY_ERROR_VERSION:
            return "its format version is not 3";
        default:
            return "damaged: the bytes 28 to 30 are not 0, 4, 0";
    }
}

}  // namespace

std::string recording_header_error(std::span<const uint8_t> data, uint64_t size) {
    if (size < REPLAY_HEADER_SIZE || data.size() < REPLAY_HEADER_SIZE) {
        return "no recording: it is shorter than the header";
    }
    struct replay header {};
    const int32_t result = replay_validate_header(&header, data.data(), static_cast<size_t>(size));
    if (result < 0) {
        return header_error_text(result);
    }
    return size > RECORDING_SIZE_LIMIT ? "larger than any game, not read" : "";
}

std::string recording_read(std::span<const uint8_t> bytes, recording* recording) {
    struct recording& log = *recording;
    log = {};
    log.bytes = bytes;
    std::string error = recording_header_error(bytes, bytes.size());
    if (!error.empty()) {
        return error;
    }
    struct replay header {};
    replay_validate_header(&header, bytes.data(), bytes.size());
    log.name = header.player_name;
    log.score = header.final_score;
    log.created = replay_read_32(&bytes[CREATED_AT]);
    if (std::memchr(&bytes[NAME_AT], 0, REPLAY_NAME_SIZE) != nullptr) {
        log.impossible.push_back({"a zero byte in the name", 1, 0});
    }
    inspector inspector(recording);
    event_record event{};
    for (size_t at = REPLAY_HEADER_SIZE; at < bytes.size();) {
        const size_t behind = inspector.take_usual_events(bytes.data(), at, bytes.size());
        if (behind > at) {
            at = behind;
            continue;
        }
        if (!read_event(bytes, &at, &event)) {
            return format("damaged: the event at byte %zu runs past the end", at);
        }
        inspector.take(event);
    }
    inspector.finish();
    return "";
}

replay_salt built_in_salt() {
    uint8_t* data = nullptr;
    size_t length = 0;
    replay_modify_data(&data, &length);
    replay_salt salt{};
    std::copy_n(data, salt.size(), salt.begin());
    std::free(data);
    return salt;
}

bool signature_is_right(const recording& recording, const replay_salt& salt) {
    const std::span<const uint8_t> content = recording.bytes.subspan(SIGNED_FROM);
    std::vector<uint8_t> signed_bytes;
    signed_bytes.reserve(content.size() + salt.size());
    signed_bytes.assign(content.begin(), content.end());
    signed_bytes.insert(signed_bytes.end(), salt.begin(), salt.end());
    const auto digest = sha1(signed_bytes.data(), signed_bytes.size());
    return std::equal(digest.begin(), digest.end(), &recording.bytes[SIGNATURE_AT]);
}

std::vector<std::string> in_words(const std::vector<finding>& findings) {
    std::vector<std::string> words;
    for (const finding& finding : findings) {
        words.push_back(finding.text);
        if (finding.count > 1) {
            words.back() += format(" %" PRIu64 " times", finding.count);
        }
        if (finding.first > 0) {
            words.back() += format(" from event %" PRIu64, finding.first);
        }
    }
    return words;
}

const char* event_type_name(uint32_t type) {
    return type / 4 < std::size(TYPE_NAMES) ? TYPE_NAMES[type / 4] : nullptr;
}

size_t shortest_width(uint32_t value) {
    if (value <= 0xffff) {
        return value <= 0xff ? 1 : 2;
    }
    return value <= 0xffffff ? 3 : 4;
}
