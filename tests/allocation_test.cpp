// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The program without memory: a whole run, with a game, its file and a playback, in which one of
// its allocations fails. It must stop with an assertion or go on. Of each place in the code the
// first two allocations and the last one fail in turn; with ALLOCATIONS=all in the environment, all
// do. And many games in one process, which must leave nothing behind.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "game.h"
#include "input.h"
#include "recorder.h"
#include "shell.h"

namespace {

// 0: allocations are listed; above 0: the one that makes it 0 fails.
int until_failure = -1;
std::vector<void*> callers;

bool fails(void* caller) {
    if (until_failure < 0) {
        return false;
    }
    if (until_failure == 0) {
        const int counting = std::exchange(until_failure, -1);  // not what this allocates
        callers.push_back(caller);
        until_failure = counting;
        return false;
    }
    return --until_failure == 0;
}

int64_t live_blocks = 0;

void* counted(void* block) {
    live_blocks += block != nullptr ? 1 : 0;
    return block;
}

}  // namespace

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void __real_free(void* block);
// NOLINTBEGIN(bugprone-reserved-identifier): the linker wants these names
void* __wrap_malloc(size_t size) {
    return fails(__builtin_return_address(0)) ? nullptr : counted(__real_malloc(size));
}
void* __wrap_calloc(size_t count, size_t size) {
    return fails(__builtin_return_address(0)) ? nullptr : counted(__real_calloc(count, size));
}
void* __wrap_realloc(void* block, size_t size) {
    if (fails(__builtin_return_address(0))) {
        return nullptr;
    }
    return block != nullptr ? __real_realloc(block, size) : counted(__real_realloc(block, size));
}
void __wrap_free(void* block) {
    live_blocks -= block != nullptr ? 1 : 0;
    __real_free(block);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

namespace fs = std::filesystem;

// Starts, plays and shoots, saves, plays a recording in which the pool of shots grows, and quits.
int run_program() {
    start_recording(1600, 900);
    rec.script = {{1, "Return"},        {2, "Return"},   {3, "+Space +Left"}, {40, "+Ctrl Ctrl"},
                  {60, "Escape"},       {62, "Escape"},  {64, "Down Return"}, {66, "Return"},
                  {66 + 745, "Return"}, {815, "Escape"}, {818, "Escape"},     {830, "Escape"},
                  {900, "close"},       {1000, "close"}};
    rec.frames.reserve(2000);
    return shell_run();
}

struct outcome {
    int status;  // as waitpid has it
    std::string error;
};

outcome run_with_failure(int place) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDERR_FILENO);
        dup2(ends[1], STDOUT_FILENO);
        const rlimit no_core_files{0, 0};
        setrlimit(RLIMIT_CORE, &no_core_files);
        until_failure = place;
        const int result = run_program();
        until_failure = -1;
        _exit(result);
    }
    close(ends[1]);
    outcome seen{0, ""};
    char chunk[512];
    for (ssize_t count = 0; (count = read(ends[0], chunk, sizeof(chunk))) > 0;) {
        seen.error.append(chunk, static_cast<size_t>(count));
    }
    close(ends[0]);
    waitpid(child, &seen.status, 0);
    return seen;
}

// Counted from 1.
std::vector<int> places_to_fail() {
    const bool all = std::getenv("ALLOCATIONS") != nullptr;
    std::map<void*, std::vector<int>> by_caller;
    for (size_t i = 0; i < callers.size(); ++i) {
        std::vector<int>& known = by_caller[callers[i]];
        if (!all && known.size() == 3) {
            known.pop_back();
        }
        known.push_back(static_cast<int>(i) + 1);
    }
    std::vector<int> places;
    for (const auto& [caller, known] : by_caller) {
        places.insert(places.end(), known.begin(), known.end());
    }
    return places;
}

TEST(allocation, every_failure_is_an_assertion_or_survived) {
    const fs::path game = fs::absolute("golden/games/0018-adv-poolgrowth.rpl");
    const scratch_folder folder;
    fs::copy_file(game, "game.rpl");
    std::ofstream("qrvn-settings.dat") << "width=800\nheight=600\nname=A\nreplay=game.rpl\n"
                                          "mouse=0\nfullscreen=0\nmusic=1\n";
    fs::copy_file("qrvn-settings.dat", "kept");
    until_failure = 0;
    EXPECT_EQ(run_program(), 0);
    until_failure = -1;
    EXPECT_GT(count_trace("sound 2"), 0) << "nothing has exploded";
    EXPECT_GT(callers.size(), 300U);
    const std::vector<int> places = places_to_fail();
    EXPECT_GT(places.size(), 40U);
    std::map<std::string, int> ends;
    for (const int place : places) {
        fs::copy_file("kept", "qrvn-settings.dat", fs::copy_options::overwrite_existing);
        const outcome seen = run_with_failure(place);
        const bool asserted = WIFSIGNALED(seen.status) && WTERMSIG(seen.status) == SIGABRT &&
                              seen.error.find("Assertion `") != std::string::npos;
        const bool survived = WIFEXITED(seen.status) && WEXITSTATUS(seen.status) == 0;
        EXPECT_TRUE(asserted || survived) << "allocation " << place << " of " << callers.size()
                                          << ": status " << seen.status << "\n"
                                          << seen.error;
        const size_t quote = seen.error.find("Assertion `");
        const size_t end = quote == std::string::npos ? quote : seen.error.find('\'', quote);
        ++ends[quote == std::string::npos ? "survived: " + seen.error
                                          : seen.error.substr(quote, end + 1 - quote)];
    }
    for (const auto& [what, times] : ends) {
        std::printf("%5d %s\n", times, what.c_str());
    }
}

TEST(allocation, games_leave_nothing) {
    std::vector<fs::path> games;
    for (const auto& entry : fs::directory_iterator("golden/games")) {
        const std::string name = entry.path().filename();  // the made-up ones wait for days
        if (name.ends_with(".rpl") && name.find("-adv-") == std::string::npos) {
            games.push_back(entry.path());
        }
    }
    ASSERT_GT(games.size(), 20U);
    start_recording(800, 600);
    constexpr size_t count = 200;
    const int64_t before = live_blocks;
    for (size_t i = 0; i < count; ++i) {
        const std::string file = games[i * 7 % games.size()];
        input* const played = input_init(file.c_str());
        ASSERT_EQ(input_is_replay(played), 1) << file;
        game* const game = game_init(played, GAME_SHIP_COUNT, 800, 600);
        EXPECT_GT(live_blocks, before);
        while (game_is_over(game) == 0) {
            rec.trace.clear();
            const int32_t time = input_tick(played);
            if (time < 0) {
                break;
            }
            game_step(game, time);
        }
        game_destroy(game);
        input_destroy(played);
        EXPECT_EQ(live_blocks, before) << file;
    }
}

}  // namespace
