// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Opens the game's window and the audio device, decodes pictures and sounds with the game's
// libraries and does nothing else: what the start of the game cannot do without.
//   bare_decoder FILE...

#include <SDL.h>
#include <SDL_image.h>
#include <SDL_mixer.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int count, char** files) {
    constexpr int RATE = 44100;
    constexpr int CHUNK = 4096;
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_AUDIO) != 0 ||
        SDL_SetVideoMode(800, 600, 0, SDL_OPENGL) == nullptr ||
        Mix_OpenAudio(RATE, AUDIO_S16LSB, 2, CHUNK) != 0) {
        return 1;
    }
    for (int i = 1; i < count; ++i) {
        bool decoded = false;
        if (std::strstr(files[i], ".ogg") != nullptr) {
            Mix_Chunk* const chunk = Mix_LoadWAV(files[i]);
            decoded = chunk != nullptr;
            Mix_FreeChunk(chunk);
        } else {
            SDL_Surface* const surface = IMG_Load(files[i]);
            decoded = surface != nullptr;
            SDL_FreeSurface(surface);
        }
        if (!decoded) {
            std::fprintf(stderr, "%s: %s\n", files[i], SDL_GetError());
            return 1;
        }
    }
    std::_Exit(0);  // as the start is measured: closing takes its own time
}
