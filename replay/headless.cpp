// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Every service that the simulation calls, answered without a device. The definitions of SDL's
// functions here stand in for libSDL, so a program links either this library or libSDL.

#include "headless.h"

#include <SDL.h>

#include <cstdio>
#include <cstdlib>

#include "gfx.h"
#include "interrupt.h"
#include "playback.h"
#include "sound.h"
#include "starfield.h"

headless headless_services;

void player_play_sound(uint32_t id) {
    if (heard_sound) {
        heard_sound(id);
    }
}

gfx* gfx_init() { return static_cast<gfx*>(std::calloc(1, sizeof(gfx))); }

void gfx_destroy(gfx* gfx) { std::free(gfx); }

// No stars: the game never reads them.
starfield* starfield_init(float /*radius*/) { return nullptr; }

void starfield_destroy(starfield* /*starfield*/) {}

void starfield_update(starfield* /*starfield*/, int32_t /*elapsed*/) {}

bool interrupt_pending() { return headless_services.interrupt; }

Uint32 SDL_GetTicks() {
    const uint32_t now = headless_services.ticks;
    headless_services.ticks += headless_services.read_cost;
    return now;
}

void SDL_Delay(Uint32 ms) {
    if (headless_services.on_delay) {
        headless_services.on_delay(ms);
    }
    headless_services.ticks += ms;
}

// --- File streams on stdio ------------------------------------------------------------------

SDL_RWops* SDL_AllocRW() { return static_cast<SDL_RWops*>(std::calloc(1, sizeof(SDL_RWops))); }

void SDL_FreeRW(SDL_RWops* area) { std::free(area); }

namespace {

std::FILE* file_of(SDL_RWops* stream) {
    return static_cast<std::FILE*>(stream->hidden.unknown.data1);
}

int stream_seek(SDL_RWops* stream, int offset, int whence) {
    if (std::fseek(file_of(stream), offset, whence) != 0) {
        return -1;
    }
    return static_cast<int>(std::ftell(file_of(stream)));
}

// As libSDL does, an error reads as the end of the file: a directory opens and holds nothing.
int stream_read(SDL_RWops* stream, void* data, int size, int count) {
    return static_cast<int>(
        std::fread(data, static_cast<size_t>(size), static_cast<size_t>(count), file_of(stream)));
}

int stream_write(SDL_RWops* stream, const void* data, int size, int count) {
    return static_cast<int>(
        std::fwrite(data, static_cast<size_t>(size), static_cast<size_t>(count), file_of(stream)));
}

int stream_close(SDL_RWops* stream) {
    const int result = std::fclose(file_of(stream));
    SDL_FreeRW(stream);
    return result;
}

}  // namespace

SDL_RWops* SDL_RWFromFile(const char* file, const char* mode) {
    std::FILE* opened = std::fopen(file, mode);
    if (opened == nullptr) {
        return nullptr;
    }
    SDL_RWops* stream = SDL_AllocRW();
    if (stream == nullptr) {
        std::fclose(opened);
        return nullptr;
    }
    stream->seek = stream_seek;
    stream->read = stream_read;
    stream->write = stream_write;
    stream->close = stream_close;
    stream->hidden.unknown.data1 = opened;
    return stream;
}
