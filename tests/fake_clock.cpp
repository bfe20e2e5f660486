// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Preloaded into a program, moves its calendar so that it starts at FAKE_CLOCK, in seconds since
// 1970; -1 is what a clock that has failed says.

#include <dlfcn.h>
#include <sys/time.h>

#include <cstdlib>
#include <ctime>

namespace {

int real_time(timeval* now) {
    static const auto call =
        reinterpret_cast<int (*)(timeval*, void*)>(dlsym(RTLD_NEXT, "gettimeofday"));
    return call(now, nullptr);
}

time_t offset() {
    static const time_t start = [] {
        timeval now{};
        real_time(&now);
        return std::atoll(std::getenv("FAKE_CLOCK")) - now.tv_sec;
    }();
    return start;
}

}  // namespace

extern "C" int gettimeofday(timeval* now, void* /*zone*/) noexcept {
    const int result = real_time(now);
    now->tv_sec += offset();
    return result;
}

extern "C" time_t time(time_t* result) noexcept {
    static const bool failed = std::atoll(std::getenv("FAKE_CLOCK")) == -1;
    timeval now{};
    gettimeofday(&now, nullptr);
    const time_t seconds = failed ? -1 : now.tv_sec;
    if (result != nullptr) {
        *result = seconds;
    }
    return seconds;
}
