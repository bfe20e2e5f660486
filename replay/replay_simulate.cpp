// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "replay_simulate.h"

#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "enemy.h"
#include "loss.h"
#include "playback.h"
#include "state_hash.h"
#include "tool.h"

namespace {

// The cells of a step's line, and the part of the state that each belongs to. The first ones are
// the trace. The others see the whole of a part: two recordings part at the first step at which
// anything differs.
constexpr const char* COLUMNS[] = {
    "step",  "hash",    "time",       "over",        "score",           "x",          "y",
    "angle", "enemies", "pool",       "shots",       "free_shot_index", "draws",      "sounds",
    "seed",  "keys",    "clock_hash", "player_hash", "ships_hash",      "shots_hash", "waves_hash"};
constexpr const char* GROUPS[] = {"clock",     "all",    "clock",     "clock", "player", "player",
                                  "player",    "player", "ships",     "shots", "shots",  "shots",
                                  "generator", "sounds", "generator", "keys",  "clock",  "player",
                                  "ships",     "shots",  "waves"};
static_assert(std::size(COLUMNS) == std::size(GROUPS));
constexpr ptrdiff_t TRACE_COLUMNS = 14;

template <typename Record>
int32_t count_of(const Record* records, int32_t count, int32_t Record::*flag) {
    const auto is_set = [flag](const Record& record) { return record.*flag != 0; };
    return static_cast<int32_t>(std::count_if(records, records + count, is_set));
}

std::string hex(uint64_t value) { return format("%016" PRIx64, value); }
std::string hex(double value) { return hex(std::bit_cast<uint64_t>(value)); }

std::string shortest(double value) {
    char digits[32];
    return {digits, std::to_chars(digits, std::end(digits), value).ptr};
}

std::string json_number(double value) { return std::isfinite(value) ? shortest(value) : "null"; }

// The cells with the hashes of clock, player, ships, shots and waves: each that of a game with
// nothing else in it.
std::string part_hashes(const game& whole) {
    ship no_player{};
    enemy_handler no_waves{};
    std::vector<struct game> part(5);
    for (struct game& each : part) {
        each.players = &no_player;
        each.enemy_handler = &no_waves;
    }
    part[0].time = whole.time;
    part[0].over = whole.over;
    part[0].radius = whole.radius;
    part[1].players = whole.players;
    part[2].ships = whole.ships;
    part[2].ship_count = whole.ship_count;
    part[3].shots = whole.shots;
    part[3].shot_count = whole.shot_count;
    part[3].free_shot_index = whole.free_shot_index;
    part[4].enemy_handler = whole.enemy_handler;
    std::string hashes;
    for (const struct game& each : part) {
        hashes += '\t' + hex(state_hash_step(STATE_HASH_START, &each));
    }
    return hashes;
}

// A playback that is watched.
struct tracer {
    explicit tracer(const recording& recording) : run(recording.bytes) {
        heard_sound = [this](uint32_t id) { sounds.push_back(std::to_string(id)); };
    }
    ~tracer() { heard_sound = nullptr; }
    tracer(const tracer&) = delete;
    tracer& operator=(const tracer&) = delete;

    bool step() {
        sounds.clear();
        loss.remember(*run.game);
        const bool stepped = run.step();
        if (stepped) {
            hash = state_hash_step(hash, run.game.get());
            lost_to = run.end == RUN_SELF ? loss.cause(*run.game) : "-";
        }
        return stepped;
    }

    std::string line() const {
        const struct game& game = *run.game;
        const ship& player = game.players[0];
        return format("%" PRIu64 "\t%s\t%d\t%d\t%d\t%s\t%s\t%s\t%d\t%d\t%d\t%d\t%u\t%s",
                      run.frames - 1, hex(hash).c_str(), game.time, game.over, player.score,
                      hex(player.position.x).c_str(), hex(player.position.y).c_str(),
                      hex(player.angle).c_str(), game.enemy_handler->alive_count, game.shot_count,
                      count_of(game.shots, game.shot_count, &shot::active), game.free_shot_index,
                      run.draws(), sounds.empty() ? "-" : joined(sounds, ",").c_str());
    }

    std::string long_line() const {
        std::string keys;
        for (const int32_t key : run.game->key_state.keys) {
            keys += std::to_string(key);
        }
        const std::string seed = std::to_string(run.input->seed);
        return joined({line(), seed, keys}, "\t") + part_hashes(*run.game);
    }

    playback run;
    uint64_t hash = STATE_HASH_START;
    std::vector<std::string> sounds;  // of the last step
    loss_watch loss;
    const char* lost_to = "-";
};

using trace_lines = std::vector<std::string>;

trace_lines lines_of(const recording& recording) {
    trace_lines lines;
    for (tracer tracer(recording); tracer.step();) {
        lines.push_back(tracer.long_line());
    }
    return lines;
}

// Reads the lines of the steps and the lines behind them, which say how many steps there are. False
// if that is not what the text is, or not all of it.
bool read_trace(std::FILE* file, trace_lines* lines) {
    constexpr size_t MOST_LINES = FRAME_LIMIT + 100;
    char text[1024];
    std::string last_hash = hex(STATE_HASH_START);
    bool has_frames = false;
    bool has_hash = false;
    for (size_t i = 0; i < MOST_LINES && std::fgets(text, sizeof(text), file) != nullptr; ++i) {
        std::string line = text;
        line.erase(line.find_last_not_of("\r\n") + 1);
        if (std::count(line.begin(), line.end(), '\t') == TRACE_COLUMNS - 1) {
            const size_t hash_at = line.find('\t') + 1;
            last_hash = line.substr(hash_at, line.find('\t', hash_at) - hash_at);
            lines->push_back(line);
        }
        has_frames |= line == "frames " + std::to_string(lines->size());
        has_hash = line == "hash " + last_hash;  // the last line
    }
    return has_frames && has_hash;
}

// A recording or a trace; the trace may come through a pipe.
load_status load_other(const std::string& path, trace_lines* lines, std::string* reason) {
    struct stat status {};
    const bool is_pipe = stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
    if (!is_pipe) {
        recording_file other;
        const load_status loaded = recording_file_load(path, &other, reason);
        if (loaded == LOAD_OK) {
            *lines = lines_of(other.log);
        }
        if (loaded != LOAD_BROKEN) {
            return loaded;
        }
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               std::fclose);
    if (!file) {
        *reason = std::strerror(errno);
        return LOAD_UNREADABLE;
    }
    if (!read_trace(file.get(), lines)) {
        *reason = is_pipe ? "no whole trace" : "no recording, and no whole trace";
        return LOAD_BROKEN;
    }
    return LOAD_OK;
}

std::vector<std::string> cells_of(const std::string& line) {
    std::vector<std::string> cells(1);
    for (const char c : line) {
        c == '\t' ? cells.emplace_back() : cells.back() += c;
    }
    return cells;
}

// What differs in a step; no groups: nothing. A trace has fewer cells than a recording.
struct difference {
    std::vector<std::string> groups;
    std::vector<std::string> ours;
    std::vector<std::string> theirs;
};

difference compare(const std::string& our_line, const std::string& their_line) {
    const auto ours = cells_of(our_line);
    const auto theirs = cells_of(their_line);
    difference found;
    for (size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        if (ours[i] != theirs[i]) {
            found.ours.push_back(COLUMNS[i] + ('=' + ours[i]));
            found.theirs.push_back(COLUMNS[i] + ('=' + theirs[i]));
            if (std::find(found.groups.begin(), found.groups.end(), GROUPS[i]) ==
                found.groups.end()) {
                found.groups.emplace_back(GROUPS[i]);
            }
        }
    }
    if (found.groups.size() > 1 && found.groups[0] == "all") {
        found.groups.erase(found.groups.begin());
    }
    return found;
}

}  // namespace

void simulate(const recording_file& file, bool trace, bool json) {
    const recording& recording = file.log;
    tracer tracer(recording);
    while (tracer.step()) {
        if (trace) {
            std::puts(tracer.line().c_str());
        }
    }
    const struct game& game = *tracer.run.game;
    const ship& player = game.players[0];
    report report;
    const auto add_vector = [&report](const char* key, const char* bits_key, vector v) {
        const std::string x = shortest(v.x);
        const std::string y = shortest(v.y);
        report.add(key, hex(v.x) + ' ' + hex(v.y) + " (" + x + ", " + y + ')',
                   '[' + json_number(v.x) + ',' + json_number(v.y) + ']');
        report.add(bits_key, "", json_list({hex(v.x), hex(v.y)}));
    };
    report.add("file", file.path);
    report.add("name", '[' + printable(recording.name) + ']', json_string(recording.name));
    report.add("header_score", int64_t{recording.score});
    report.add("events", static_cast<int64_t>(recording.event_count));
    report.add("fresh_process", recording.steps_unseeded ? 1 : 0);
    report.add("frames", static_cast<int64_t>(tracer.run.frames));
    report.add("last_time", game.time);
    report.add("end", run_end_name(tracer.run.end));
    report.add("over_time", game.over != 0 ? game.time : -1);
    report.add("lost_to", tracer.lost_to);
    report.add("score", player.score);
    report.add("chain_count", player.chain_count);
    report.add("chain_color", player.chain_color);
    report.add("chain_shown", player.chain_shown);
    report.add("player_alive", player.alive);
    add_vector("position", "position_bits", player.position);
    add_vector("velocity", "velocity_bits", player.velocity);
    report.add("angle", hex(player.angle) + " (" + shortest(player.angle) + ')',
               json_number(player.angle));
    report.add("angle_bits", "", json_string(hex(player.angle)));
    report.add("shot_count", game.shot_count);
    report.add("active_shots", count_of(game.shots, game.shot_count, &shot::active));
    report.add("alive_enemies", count_of(game.ships, game.ship_count, &ship::alive));
    report.add("draws", int64_t{tracer.run.draws()});
    report.add("hash", hex(tracer.hash));
    print_report(report, json);
}

int simulate_diff(const recording_file& file, const std::string& other, bool json) {
    trace_lines theirs;
    std::string reason;
    const load_status status = load_other(other, &theirs, &reason);
    if (status != LOAD_OK) {
        return complain(other, reason, status);
    }
    const trace_lines ours = lines_of(file.log);
    size_t step = 0;
    difference found;
    while (found.groups.empty() && step < std::min(ours.size(), theirs.size())) {
        found = compare(ours[step], theirs[step]);
        step += found.groups.empty() ? 1 : 0;
    }
    if (found.groups.empty() && ours.size() != theirs.size()) {
        found = {{"end"},
                 {"frames=" + std::to_string(ours.size())},
                 {"frames=" + std::to_string(theirs.size())}};
    }
    report report;
    report.add("file", file.path);
    report.add("other", other);
    report.add("result", found.groups.empty() ? "same" : "parted");
    report.add("step", static_cast<int64_t>(step));
    report.add("groups", joined(found.groups, " "), json_list(found.groups));
    report.add("ours", joined(found.ours, " "));
    report.add("theirs", joined(found.theirs, " "));
    print_report(report, json);
    return found.groups.empty() ? 0 : 1;
}
