// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Whole frames on a real OpenGL, until they are on the screen. Needs a display; runs in the
// project's root.

#include <GL/gl.h>
#include <SDL.h>
#include <benchmark/benchmark.h>

#include "assets.h"
#include "font.h"
#include "recorded_game.h"
#include "video.h"

namespace {

void frame(benchmark::State& state) {
    const auto width = static_cast<int32_t>(state.range(0));
    const auto height = static_cast<int32_t>(state.range(1));
    if (SDL_Init(SDL_INIT_VIDEO) != 0 || init_video(width, height, 0) != 0 ||
        load_textures() != 0) {
        state.SkipWithError("no display, no video mode, or no pictures");
        return;
    }
    font_init();
    const std::vector<uint8_t> bytes = recorded_game(BUSY_GAMES[0]);
    const playback run = busiest_frame(bytes, width, height);
    for ([[maybe_unused]] auto _ : state) {
        game_draw(run.game.get());
        SDL_GL_SwapBuffers();
        glFinish();
    }
    state.SetLabel(reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    if (glGetError() != GL_NO_ERROR) {
        state.SkipWithError("OpenGL reports an error");
    }
    font_destroy();
    unload_textures();
}
BENCHMARK(frame)
    ->Args({320, 240})
    ->Args({800, 600})
    ->Args({1280, 720})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
