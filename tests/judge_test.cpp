// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// One process judges recordings in any order and finds what a process finds that judges nothing
// else. In a program of its own: the first judgements here are a fresh process's.

#include "judge.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <filesystem>
#include <functional>
#include <iterator>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "game_key.h"
#include "recording_file.h"
#include "sound.h"

namespace {

using bytes = std::vector<uint8_t>;

// All that a judgement says, but for the bytes it was given.
std::string said_of(const bytes& file) {
    const judgement found = judge_recording(file, {built_in_salt(), true});
    std::ostringstream said;
    said << verdict_name(found.verdict) << ' ' << found.error << ' ' << found.is_signed << '\n';
    for (const std::vector<finding>* list : {&found.log.impossible, &found.log.remarks}) {
        for (const std::string& text : in_words(*list)) {
            said << text << '\n';
        }
    }
    if (found.played) {
        const game_result& game = *found.played;
        said << game.before << ' ' << game.after << ' ' << run_end_name(game.end) << ' '
             << game.frames << ' ' << game.time << ' ' << game.lost_to << '\n'
             << game_key_digest(game.key) << '\n';
        for (const course_entry& entry : game.course.entries) {
            said << entry.time << course_kind_name(entry.kind) << entry.points << ' ';
        }
        for (const int32_t score : game.course.scores) {
            said << score << ' ';
        }
    }
    return said.str();
}

// The same, found by a child of this process.
std::string said_by_child(const bytes& file) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        const std::string said = said_of(file);
        size_t at = 0;
        for (ssize_t count = 1; count > 0 && at < said.size(); at += size_t(count)) {
            count = write(ends[1], said.data() + at, said.size() - at);
        }
        _exit(at == said.size() ? 0 : 1);
    }
    close(ends[1]);
    std::string said;
    std::array<char, 4096> part{};
    for (ssize_t count = 0; (count = read(ends[0], part.data(), part.size())) > 0;) {
        said.append(part.data(), size_t(count));
    }
    close(ends[0]);
    int status = 0;
    EXPECT_TRUE(waitpid(child, &status, 0) == child && status == 0);
    return said;
}

// Refused unplayed: there is a second seed behind the events of a game.
bytes with_second_seed(bytes file) {
    file.insert(file.end(), {REPLAY_EVENT_SEED | 1, 7});
    const size_t length = file.size() - REPLAY_HEADER_SIZE;
    for (size_t i = 0; i < 4; ++i) {
        file[REPLAY_HEADER_SIZE - 1 - i] = uint8_t(length >> (8 * i));
    }
    return file;
}

std::vector<bytes> all_files() {
    std::vector<std::string> names;
    for (const char* folder : {"golden/games", "golden/broken"}) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() == ".rpl") {
                names.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(names, std::greater());  // the games first
    std::vector<bytes> files;
    for (const std::string& name : names) {
        std::string reason;
        EXPECT_NE(recording_file_read(name, &files.emplace_back(), &reason), LOAD_UNREADABLE)
            << name << reason;
    }
    files.push_back(with_second_seed(files[0]));
    return files;
}

TEST(judging, has_no_memory) {
    const std::vector<bytes> files = all_files();
    ASSERT_GT(files.size(), 100U);
    std::vector<std::string> alone;
    std::ranges::transform(files, std::back_inserter(alone), said_by_child);
    EXPECT_EQ(alone.back().substr(0, 10), "impossible");
    EXPECT_EQ(std::set<std::string>(alone.begin(), alone.end()).count(""), 0U);

    std::vector<size_t> order(files.size());
    std::iota(order.begin(), order.end(), 0);
    std::vector<size_t> orders = order;
    orders.insert(orders.end(), order.rbegin(), order.rend());
    for (const size_t i : order) {
        orders.insert(orders.end(), {i, i});
    }
    std::ranges::shuffle(order, std::mt19937(1));  // NOLINT: the same order each time
    orders.insert(orders.end(), order.begin(), order.end());

    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    size_t heard = 0;
    heard_sound = [&heard](uint32_t) { ++heard; };
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    playback other(files[8]);  // broken off by each judgement
    for (const size_t i : orders) {
        const uint64_t frames = other.frames;
        const std::string said = said_of(files[i]);
        EXPECT_EQ(said, alone[i]) << "file " << i;
        EXPECT_EQ(other.frames, frames);
        other.step();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C.UTF-8");
    const size_t heard_before = heard;
    heard_sound(SOUND_EXPLODE);
    EXPECT_EQ(heard, heard_before + 1) << "the listener is there again";
}

}  // namespace
