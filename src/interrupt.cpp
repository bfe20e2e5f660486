// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "interrupt.h"

#include <SDL.h>

#include <algorithm>
#include <array>

bool interrupt_pending() {
    std::array<SDL_Event, 128> events;  // as many as SDL's queue holds
    SDL_PumpEvents();
    const int count = SDL_PeepEvents(events.data(), static_cast<int>(events.size()), SDL_PEEKEVENT,
                                     SDL_QUITMASK | SDL_KEYUPMASK);
    return std::any_of(events.begin(), events.begin() + std::max(count, 0),
                       [](const SDL_Event& event) {
                           return event.type == SDL_QUIT || event.key.keysym.sym == SDLK_ESCAPE;
                       });
}
