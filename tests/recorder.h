// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// A stand-in for OpenGL, SDL's window, events and clock, the image decoder, the audio player and
// the uploader, linked in their place. It does not remember calls: it keeps a model of the GL state
// (matrix stacks, enables, colour, blending, textures, display lists) and turns every begin/end
// pair into a primitive with its vertices in window pixels, so that tests ask what is seen and
// where, not how it was asked for.

#pragma once

#include <GL/gl.h>
#include <SDL.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

using rgba = std::array<float, 4>;
using matrix = std::array<double, 16>;  // column by column, as GL has it
using strings = std::vector<std::string>;

struct drawn_vertex {
    double x, y;  // window pixels, origin at the bottom left
    double s, t;
};

struct primitive {
    GLenum kind;
    int texture;    // texture id, -1 for GL name 0
    bool textured;  // whether texturing was enabled
    bool additive;  // the blend function adds; otherwise it is the resting one
    bool y_down;    // the caller's projection has its origin at the top left
    float line_width, point_size;
    rgba color;
    std::vector<drawn_vertex> vertices;
    std::string text;  // all that one glCallLists drew, in place of its quads; see `glyphs`
};

struct image {
    int width, height, bytes_per_pixel;  // what the decoder finds in a file; no width: no file
    std::string file{};                  // what arrived in a texture
    GLenum format = 0;
    std::map<GLenum, GLint> parameters{};
};

struct recorder {
    // GL: what was drawn, and what a real one would have refused.
    std::vector<primitive> primitives, glyphs;
    strings problems;
    int calls = 0, matrix_reads = 0, error_reads = 0;  // that draw or change state; of the others
    GLenum error = GL_NO_ERROR, upload_error = GL_NO_ERROR;

    // GL: state.
    std::array<std::vector<matrix>, 2> stacks;  // model-view, projection
    size_t mode = 0;                            // index into `stacks`
    std::array<GLint, 4> viewport{};
    std::map<GLenum, bool> enabled;
    std::array<GLenum, 2> blend{GL_ONE, GL_ZERO};
    rgba color{1, 1, 1, 1}, clear_color{1, 1, 1};
    double s = 0, t = 0;
    GLuint bound = 0;
    float line_width = 1, point_size = 1;
    bool open = false;            // between begin and end
    std::vector<GLuint> names;    // of the textures, by id
    std::map<int, image> images;  // by texture id
    std::map<GLuint, std::vector<std::function<void()>>> lists;
    GLuint compiling = 0, list_base = 0;

    // The decoder finds a small picture under every name unless told otherwise.
    std::map<std::string, image> files;
    strings loads;  // names asked for, in order

    // SDL and the services.
    strings trace;  // "mode 800x600", "clear", "delay 10", "swap", "sound 5", ...
    std::deque<SDL_Event> events;
    std::map<int, std::string> script;  // events for push() after the swap of that number
    std::vector<strings> frames;        // what was seen, swap by swap
    uint32_t now = 1000;                // clock, ms; delays move it
    bool no_surface = false;
    int screen_width = 1600, screen_height = 900;  // what SDL reports: the desktop, then the mode
    int upload_result = 0;
    std::string uploaded;  // "" for nothing
};

extern recorder rec;

// A fresh recorder as a menu frame finds it: a video mode of this size, blending at rest,
// texturing on, all textures and fonts loaded, nothing drawn.
void start_recording(int width = 800, int height = 600);

// What was drawn since the last call, one line a primitive, and then whatever an operation must not
// leave behind (problems, open stacks, a blend function or, unless waived, a colour):
//   "player_ship_1 at 400,300 60x60 turned 90 red added"  a picture by its file, centre, half
//   sizes,
//                                                         and the turn of its upper edge
//   "'Quit' at 10,75 24", "[12] at 20,15 36"              a text in the general or digits font, its
//                                                         top left corner, cell height
//   "plain 9 126 at ..."                                  GL kind and number of vertices
// All in window pixels, with the origin at the top left where the caller has y downward.
strings seen(bool white = true);

// Queues events: "close", "resize", "mouse", or keys, "x" released and "+x" pressed.
void push(const std::string& words);

int count_trace(const std::string& entry);

// What it prints: standard output, '|', standard error.
std::string printed_by(const std::function<void()>& action);

template <class T>
using owner = std::unique_ptr<T, void (*)(T*)>;

// The working directory of a test until it ends: new and empty, removed with everything in it.
struct scratch_folder {
    scratch_folder();
    ~scratch_folder();
    std::filesystem::path folder;
    std::filesystem::path before = std::filesystem::current_path();
};
