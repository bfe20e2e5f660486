// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What a frame asks of OpenGL and of the heap, and the time that takes our own code: the OpenGL
// here does nothing but count. Runs in the project's root.

#include <GL/gl.h>
#include <SDL.h>
#include <benchmark/benchmark.h>

#include <algorithm>

#include "counted_heap.h"
#include "font.h"
#include "player.h"
#include "recorded_game.h"
#include "texture.h"

namespace {

constexpr int32_t WIDTH = 1280;
constexpr int32_t HEIGHT = 720;

int64_t gl_calls = 0;
int64_t matrix_reads = 0;

// The camera of a ship between hole and edge, for whoever reads it back:
// 80 pixels a playfield unit.
constexpr GLdouble MODEL_VIEW[16] = {80, 0, 0, 0, 0,         80,         0, 0,
                                     0,  0, 1, 0, WIDTH / 2, HEIGHT / 2, 0, 1};
constexpr GLdouble PROJECTION[16] = {2.0 / WIDTH, 0, 0,  0, 0,  2.0 / HEIGHT, 0, 0,
                                     0,           0, -1, 0, -1, -1,           0, 1};
constexpr GLint VIEWPORT[4] = {0, 0, WIDTH, HEIGHT};

}  // namespace

// Definitions in the executable come before those of the libraries.
#define COUNTED(name, ...) \
    void name(__VA_ARGS__) { ++gl_calls; }

extern "C" {
// clang-format off
COUNTED(glBindTexture, GLenum, GLuint) COUNTED(glBlendFunc, GLenum, GLenum)
COUNTED(glCallLists, GLsizei, GLenum, const GLvoid*) COUNTED(glClear, GLbitfield)
COUNTED(glBegin, GLenum) COUNTED(glClearColor, GLclampf, GLclampf, GLclampf, GLclampf)
COUNTED(glColor3f, GLfloat, GLfloat, GLfloat) COUNTED(glColor4f, GLfloat, GLfloat, GLfloat, GLfloat)
COUNTED(glDeleteLists, GLuint, GLsizei) COUNTED(glDeleteTextures, GLsizei, const GLuint*)
COUNTED(glDisable, GLenum) COUNTED(glEnable, GLenum) COUNTED(glEnd, void) COUNTED(glEndList, void)
COUNTED(glGenTextures, GLsizei, GLuint*) COUNTED(glLineWidth, GLfloat) COUNTED(glListBase, GLuint)
COUNTED(glLoadIdentity, void) COUNTED(glMatrixMode, GLenum) COUNTED(glNewList, GLuint, GLenum)
COUNTED(glOrtho, GLdouble, GLdouble, GLdouble, GLdouble, GLdouble, GLdouble)
COUNTED(glPointSize, GLfloat) COUNTED(glPopMatrix, void) COUNTED(glPushMatrix, void)
COUNTED(glRotated, GLdouble, GLdouble, GLdouble, GLdouble)
COUNTED(glRotatef, GLfloat, GLfloat, GLfloat, GLfloat)
COUNTED(glScaled, GLdouble, GLdouble, GLdouble) COUNTED(glScalef, GLfloat, GLfloat, GLfloat)
COUNTED(glTexCoord2f, GLfloat, GLfloat) COUNTED(glTranslated, GLdouble, GLdouble, GLdouble)
COUNTED(glTranslatef, GLfloat, GLfloat, GLfloat) COUNTED(glVertex2d, GLdouble, GLdouble)
COUNTED(glVertex2f, GLfloat, GLfloat) COUNTED(glVertex2i, GLint, GLint)
COUNTED(glVertex3d, GLdouble, GLdouble, GLdouble) COUNTED(glVertex3f, GLfloat, GLfloat, GLfloat)
    // clang-format on

    GLuint glGenLists(GLsizei /*range*/) {
    return 1;
}

GLenum glGetError() { return GL_NO_ERROR; }

void glGetDoublev(GLenum name, GLdouble* values) {
    ++gl_calls;
    matrix_reads += name == GL_MODELVIEW_MATRIX ? 1 : 0;
    std::copy_n(name == GL_MODELVIEW_MATRIX ? MODEL_VIEW : PROJECTION, 16, values);
}

void glGetIntegerv(GLenum /*name: the viewport*/, GLint* values) {
    ++gl_calls;
    std::copy_n(VIEWPORT, 4, values);
}

SDL_Surface* SDL_GetVideoSurface() {
    static SDL_Surface surface{};
    surface.w = WIDTH;
    surface.h = HEIGHT;
    return &surface;
}
}

void player_play_sound(uint32_t /*id*/) {}

namespace {

using benchmark::State;

// Draws the same frame again and again.
void draw(State& state, const game* game) {
    tex_init();
    font_init();
    game_draw(game);
    gl_calls = matrix_reads = 0;
    const int64_t requests = heap_requests;
    for ([[maybe_unused]] auto _ : state) {
        game_draw(game);
    }
    const auto frames = static_cast<double>(state.iterations());
    state.counters["heap_requests"] = static_cast<double>(heap_requests - requests) / frames;
    state.counters["gl_calls"] = static_cast<double>(gl_calls) / frames;
    state.counters["matrix_reads"] = static_cast<double>(matrix_reads) / frames;
}

void draw_busiest(State& state) {
    const std::vector<uint8_t> bytes = recorded_game(BUSY_GAMES[state.range(0)]);
    const playback run = busiest_frame(bytes, WIDTH, HEIGHT);
    state.SetLabel(BUSY_GAMES[state.range(0)]);
    state.counters["enemies"] = run.game->enemy_handler->alive_count;
    state.counters["shots"] = shots_in_flight(run.game.get());
    draw(state, run.game.get());
}
BENCHMARK(draw_busiest)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);

// A game before its first step: the scenery, the player, and slots that show nothing. The same
// stars for all numbers of slots.
void draw_empty(State& state) {
    static const std::shared_ptr<input> input(input_init(nullptr), input_destroy);
    static const std::shared_ptr<game> game(game_init(input.get(), 1000, WIDTH, HEIGHT),
                                            game_destroy);
    game->ship_count = static_cast<int32_t>(state.range(0));
    draw(state, game.get());
    game->ship_count = 1000;
}
BENCHMARK(draw_empty)->Arg(100)->Arg(1000)->ArgName("slots")->Unit(benchmark::kMicrosecond);

}  // namespace
