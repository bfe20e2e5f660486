// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Preloaded into the program: its main thread's clock belongs to whoever shares the page in the
// file OWNED_CLOCK. SDL_GetTicks stands still but for sleeps, and a sleep ends when that much time
// has been granted, so that a busy machine changes nothing and an idle one need not be waited for.
// Other threads, the mixer's above all, stay on the real clock.
//
// While time is granted that is not used yet, frames are drawn but not shown: nobody looks.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

struct shared_page {
    std::atomic<uint32_t> now;      // ms
    std::atomic<uint32_t> granted;  // up to here time may go on
    std::atomic<uint32_t> wanted;   // where the sleep that waits for a grant ends; 0: none waits
    std::atomic<uint32_t> frames;   // finished so far, shown or not
};

constexpr uint32_t MOST_UNSHOWN = 25;

shared_page* page = nullptr;
uint32_t unshown = 0;

__attribute__((constructor)) void open_page() {
    const char* const path = std::getenv("OWNED_CLOCK");
    const int file = path != nullptr ? open(path, O_RDWR | O_CLOEXEC) : -1;
    if (file < 0) {
        return;
    }
    void* const shared =
        mmap(nullptr, sizeof(shared_page), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    page = shared != MAP_FAILED ? static_cast<shared_page*>(shared) : nullptr;
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // without its owner it would wait for ever
}

bool is_owned() { return page != nullptr && syscall(SYS_gettid) == getpid(); }

bool has_passed(uint32_t time, uint32_t end) { return static_cast<int32_t>(time - end) >= 0; }

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void show() {
    static auto* const call = next<void()>("SDL_GL_SwapBuffers");
    unshown = 0;
    call();
}

}  // namespace

extern "C" uint32_t SDL_GetTicks() {
    static auto* const call = next<uint32_t()>("SDL_GetTicks");
    return is_owned() ? page->now.load() : call();
}

extern "C" void SDL_Delay(uint32_t ms) {
    static auto* const call = next<void(uint32_t)>("SDL_Delay");
    if (!is_owned()) {
        call(ms);
        return;
    }
    const uint32_t end = page->now + ms;
    while (!has_passed(page->granted, end)) {
        if (unshown > 0) {
            show();
        }
        page->wanted = end;
        constexpr timespec MOMENT = {0, 200000};
        nanosleep(&MOMENT, nullptr);
    }
    page->wanted = 0;
    // The owner may have moved it meanwhile.
    uint32_t now = page->now;
    while (!has_passed(now, end) && !page->now.compare_exchange_weak(now, end)) {
    }
}

extern "C" void SDL_GL_SwapBuffers() {
    if (is_owned()) {
        ++page->frames;
    }
    if (is_owned() && !has_passed(page->now, page->granted) && unshown < MOST_UNSHOWN) {
        ++unshown;
    } else {
        show();
    }
}
