// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Preloaded into the program, notes the frames of live games: the clock as the frame limiter read
// it, its sleep, and the moment when the frame was shown. Ends the program after as many frames as
// QUORVANE_BENCH_FRAMES says and writes a line for each to the file QUORVANE_BENCH_OUT: all times
// in ns of the monotonic clock, "number read ticks slept_ms before after shown". Menu frames read
// no clock and are counted only. Without QUORVANE_BENCH_OUT it ends the program at its first frame
// of any kind.

#include <SDL.h>
#include <dlfcn.h>
#include <sys/auxv.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>

namespace {

// What is known of the frame being made: 0 where nothing has happened yet.
struct {
    int64_t number, read, before, after;
    uint32_t ticks, slept;
} frame;

int64_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * int64_t{1000000000} + time.tv_nsec;
}

// True for calls by the program itself: SDL's own code, threads included, reads the clock and
// sleeps as well.
bool from_program(void* return_address) {
    constexpr uintptr_t PAGE = 4096;
    static const uintptr_t program = getauxval(AT_PHDR) / PAGE;  // its first page
    Dl_info caller{};
    return dladdr(return_address, &caller) != 0 &&
           reinterpret_cast<uintptr_t>(caller.dli_fbase) / PAGE == program;
}

template <typename function>
function* real(const char* name) {
    void* found = dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
        std::cerr << "frame_recorder: no " << name << '\n';
        std::_Exit(1);
    }
    return reinterpret_cast<function*>(found);
}

}  // namespace

extern "C" {

// Of a frame's readings the one before the sleep counts.
Uint32 SDL_GetTicks() {
    static auto* const original = real<Uint32()>("SDL_GetTicks");
    const Uint32 ticks = original();
    const int64_t read = now();
    if (frame.after == 0 && from_program(__builtin_return_address(0))) {
        frame.read = read;
        frame.ticks = ticks;
    }
    return ticks;
}

void SDL_Delay(Uint32 ms) {
    static auto* const original = real<void(Uint32)>("SDL_Delay");
    const int64_t before = now();
    original(ms);
    if (from_program(__builtin_return_address(0))) {
        frame.slept = ms;
        frame.before = before;
        frame.after = now();
    }
}

void SDL_GL_SwapBuffers() {
    static auto* const original = real<void()>("SDL_GL_SwapBuffers");
    static const char* const path = std::getenv("QUORVANE_BENCH_OUT");
    static const char* const count = std::getenv("QUORVANE_BENCH_FRAMES");
    static int64_t missing = count != nullptr ? std::strtoll(count, nullptr, 10) : 1;
    original();
    const int64_t shown = now();
    if (path == nullptr) {
        std::_Exit(0);
    }
    static std::ofstream out(path);
    if (frame.read != 0) {
        out << frame.number << ' ' << frame.read << ' ' << frame.ticks << ' ' << frame.slept << ' '
            << frame.before << ' ' << frame.after << ' ' << shown << '\n';
        if (--missing == 0) {
            rusage usage{};
            getrusage(RUSAGE_SELF, &usage);
            out << "peak_kib " << usage.ru_maxrss << '\n';
            out.close();
            std::_Exit(out ? 0 : 1);
        }
    }
    const int64_t number = frame.number + 1;
    frame = {};
    frame.number = number;
}
}
