// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Runs a command and prints its wall-clock time, processor time (its children's included), peak
// memory and exit status as a JSON object:  measure COMMAND [ARGUMENT...]
// A small program of its own, because a child's peak counts what its parent was when it forked.
// The command's output goes nowhere.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main(int /*argument_count*/, char** arguments) {
    posix_spawn_file_actions_t silence;
    posix_spawn_file_actions_init(&silence);
    posix_spawn_file_actions_addopen(&silence, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&silence, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    int status = 0;
    rusage usage{};
    if (arguments[1] == nullptr ||
        posix_spawnp(&child, arguments[1], &silence, nullptr, arguments + 1, environ) != 0 ||
        wait4(child, &status, 0, &usage) != child) {
        std::fprintf(stderr, "measure: no command, or it cannot be run\n");
        return 1;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    std::printf("{\"wall_s\": %.6f, \"cpu_s\": %.6f, \"peak_mib\": %.2f, \"status\": %d}\n",
                wall.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
                static_cast<double>(usage.ru_maxrss) / 1024.0,  // from KiB
                WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    return 0;
}
