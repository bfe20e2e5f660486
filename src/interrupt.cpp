// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "interrupt.h"

#include <SDL.h>

namespace {

bool interrupt_requested = false;

}  // namespace

bool interrupt_pending() {
    if (interrupt_requested) {
        return true;
    }
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        if (event.type == SDL_QUIT ||
            (event.type == SDL_KEYUP && event.key.keysym.sym == SDLK_ESCAPE)) {
            SDL_PushEvent(&event);  // for the session loop; there is room, it was just taken out
            return true;
        }
    }
    return false;
}

void interrupt_set(bool requested) { interrupt_requested = requested; }
