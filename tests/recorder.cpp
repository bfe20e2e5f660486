// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// See recorder.h. Defines the libraries' functions themselves, so the linker takes these instead of
// the shared libraries', and the whole of two modules (audio player, uploader), so that their
// archive members are never pulled.

#include "recorder.h"

#include <SDL_image.h>
#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "assets.h"
#include "font.h"
#include "player.h"
#include "poster.h"
#include "texture.h"
#include "video.h"

recorder rec;

namespace {

constexpr matrix IDENTITY{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
constexpr std::array<GLenum, 2> RESTING_BLEND{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA};
constexpr size_t ENDLESS = 3000;  // more trace than any test needs

void problem(bool found, const std::string& text) {
    if (found) {
        rec.problems.push_back("PROBLEM: " + text);
    }
}

// For calls that GL forbids between begin and end and that no list of this program contains.
recorder& state() {
    rec.calls++;
    problem(rec.open || rec.compiling != 0, "state changed between begin and end or in a list");
    return rec;
}

// For calls that lists contain: carries them out, or puts them into the list being compiled.
void compile_or_run(const std::function<void()>& effect) {
    rec.calls++;
    if (rec.compiling != 0) {
        rec.lists[rec.compiling].push_back(effect);
    } else {
        effect();
    }
}

void transform(const matrix& by) {
    matrix& current = rec.stacks[rec.mode].back();
    const matrix before = std::exchange(current, matrix{});
    for (size_t i = 0; i < 64; i++) {
        current[i / 4] += before[i % 4 * 4 + i / 4 % 4] * by[i / 16 * 4 + i % 4];
    }
}

void add_vertex(double x, double y) {
    const matrix& m = rec.stacks[0].back();
    const matrix& p = rec.stacks[1].back();  // an orthographic one
    primitive& drawn = rec.primitives.back();
    problem(!rec.open || drawn.color != rec.color, "vertex outside begin and end or recoloured");
    const double ndc_x = p[0] * (m[0] * x + m[4] * y + m[12]) + p[12];
    const double ndc_y = p[5] * (m[1] * x + m[5] * y + m[13]) + p[13];
    drawn.vertices.push_back({(ndc_x + 1) / 2 * rec.viewport[2] + rec.viewport[0],
                              (ndc_y + 1) / 2 * rec.viewport[3] + rec.viewport[1], rec.s, rec.t});
}

int texture_of(GLuint name) {
    const auto found = std::find(rec.names.begin(), rec.names.end(), name);
    return found == rec.names.end() ? -1 : static_cast<int>(found - rec.names.begin());
}

void log(const std::string& entry) {
    rec.trace.push_back(entry);
    if (rec.trace.size() > ENDLESS) {
        throw std::runtime_error("the program never ends");
    }
}

}  // namespace

// clang-format off
// One line a call where one line will do.

// --- OpenGL -----------------------------------------------------------------------------------

void glBegin(GLenum kind) {
    compile_or_run([=] {
        const bool additive = rec.blend == std::array<GLenum, 2>{GL_SRC_ALPHA, GL_ONE};
        problem(rec.open || !rec.enabled[GL_BLEND] || rec.enabled[GL_DEPTH_TEST] ||
                (!additive && rec.blend != RESTING_BLEND), "odd state for drawing");
        rec.open = true;
        rec.primitives.push_back({kind, texture_of(rec.bound), rec.enabled[GL_TEXTURE_2D], additive,
                                  rec.stacks[1].back()[5] < 0, rec.line_width, rec.point_size,
                                  rec.color, {}, ""});
    });
}
void glEnd() {
    compile_or_run([] {
        rec.open = false;
        std::erase_if(rec.primitives, [](const auto& drawn) { return drawn.vertices.empty(); });
    });
}
void glVertex2d(GLdouble x, GLdouble y) { compile_or_run([=] { add_vertex(x, y); }); }
void glVertex2f(GLfloat x, GLfloat y) { glVertex2d(x, y); }
void glVertex2i(GLint x, GLint y) { glVertex2d(x, y); }
void glVertex3d(GLdouble x, GLdouble y, GLdouble) { glVertex2d(x, y); }
void glVertex3f(GLfloat x, GLfloat y, GLfloat) { glVertex2d(x, y); }
void glTexCoord2f(GLfloat s, GLfloat t) { compile_or_run([=] { rec.s = s, rec.t = t; }); }

void glTranslated(GLdouble x, GLdouble y, GLdouble) {
    compile_or_run([=] { transform({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, 0, 1}); });
}
void glTranslatef(GLfloat x, GLfloat y, GLfloat z) { glTranslated(x, y, z); }
void glScaled(GLdouble x, GLdouble y, GLdouble) {
    state(), transform({x, 0, 0, 0, 0, y, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}
void glScalef(GLfloat x, GLfloat y, GLfloat z) { glScaled(x, y, z); }
void glRotated(GLdouble degrees, GLdouble x, GLdouble y, GLdouble z) {
    const double c = std::cos(degrees * M_PI / 180), s = std::sin(degrees * M_PI / 180);
    problem(x != 0 || y != 0 || z <= 0, "rotation about another axis than z");
    state(), transform({c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}
void glRotatef(GLfloat degrees, GLfloat x, GLfloat y, GLfloat z) { glRotated(degrees, x, y, z); }
void glOrtho(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top, GLdouble, GLdouble) {
    const double w = right - left, h = top - bottom;
    problem(rec.mode != 1, "projection in the model-view matrix");
    transform({2 / w, 0, 0, 0, 0, 2 / h, 0, 0, 0, 0, 1, 0, -(right + left) / w, -(top + bottom) / h,
               0, 1});
}
void glMatrixMode(GLenum mode) { state().mode = mode == GL_PROJECTION ? 1 : 0; }
void glLoadIdentity() { state().stacks[rec.mode].back() = IDENTITY; }
void glPushMatrix() { state().stacks[rec.mode].push_back(matrix(rec.stacks[rec.mode].back())); }
void glPopMatrix() {
    problem(state().stacks[rec.mode].size() < 2, "matrix stack underflow");
    rec.stacks[rec.mode].resize(std::max<size_t>(rec.stacks[rec.mode].size() - 1, 1));
}

void glColor4f(GLfloat r, GLfloat g, GLfloat b, GLfloat a) { state().color = {r, g, b, a}; }
void glColor3f(GLfloat r, GLfloat g, GLfloat b) { glColor4f(r, g, b, 1); }
void glEnable(GLenum what) { state().enabled[what] = true; }
void glDisable(GLenum what) { state().enabled[what] = false; }
void glBlendFunc(GLenum source, GLenum destination) { state().blend = {source, destination}; }
void glLineWidth(GLfloat width) { state().line_width = width; }
void glPointSize(GLfloat size) {
    size > 0 ? void(state().point_size = size) : void(rec.error = GL_INVALID_VALUE);
}
void glViewport(GLint x, GLint y, GLsizei w, GLsizei h) { state().viewport = {x, y, w, h}; }
void glClearColor(GLclampf r, GLclampf g, GLclampf b, GLclampf) { state().clear_color = {r, g, b}; }
void glClear(GLbitfield mask) {
    problem(mask != (GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT), "half a clear");
    log(state().clear_color[0] == 0.0F ? "clear black" : "clear");
}
GLenum glGetError() {
    rec.error_reads++;
    return std::exchange(rec.error, 0U);
}
void glGetDoublev(GLenum what, GLdouble* values) {
    rec.matrix_reads++;
    std::copy_n(rec.stacks[what == GL_PROJECTION_MATRIX ? 1 : 0].back().begin(), 16, values);
}
void glGetIntegerv(GLenum, GLint* values) { std::copy_n(rec.viewport.begin(), 4, values); }

void glGenTextures(GLsizei count, GLuint* names) {
    std::generate_n(names, count, [name = 700U]() mutable { return name -= 7; });
    rec.names.assign(names, names + count);
}
void glDeleteTextures(GLsizei count, const GLuint* names) {
    problem(rec.names != std::vector<GLuint>(names, names + count), "other textures deleted");
    rec.names.clear();
}
void glBindTexture(GLenum, GLuint name) { state().bound = name; }
void glTexImage2D(GLenum, GLint level, GLint internal, GLsizei width, GLsizei height, GLint border,
                  GLenum format, GLenum type, const void*) {
    problem(level != 0 || border != 0 || internal != static_cast<GLint>(format) ||
            type != GL_UNSIGNED_BYTE, "odd upload");
    rec.images[texture_of(rec.bound)] = {width, height, 0, rec.loads.back(), format, {}};
    rec.error = rec.upload_error;
}
void glTexParameteri(GLenum, GLenum what, GLint value) {
    rec.images[texture_of(rec.bound)].parameters[what] = value;
}

GLuint glGenLists(GLsizei count) {
    const GLuint first = rec.lists.empty() ? 1000 : rec.lists.rbegin()->first + 1000;
    for (GLsizei i = 0; i < count; i++) {
        rec.lists[first + static_cast<GLuint>(i)];
    }
    return first;
}
void glDeleteLists(GLuint first, GLsizei count) {
    std::erase_if(rec.lists, [=](const auto& list) {
        return list.first - first < static_cast<GLuint>(count);
    });
}
void glNewList(GLuint list, GLenum mode) {
    problem(mode != GL_COMPILE || rec.lists.count(list) == 0, "odd list");
    state().compiling = list;
}
void glEndList() { rec.compiling = 0; }
void glListBase(GLuint base) { state().list_base = base; }
// Keeps the text itself; the quads that its lists draw go where font tests find them.
void glCallLists(GLsizei count, GLenum type, const void* offsets) {
    const auto* bytes = static_cast<const uint8_t*>(offsets);
    std::vector<primitive> others = std::exchange(rec.primitives, {});
    problem(type != GL_UNSIGNED_BYTE, "text bytes with a sign");
    for (GLsizei i = 0; i < count; i++) {
        for (const auto& step : state().lists.at(rec.list_base + bytes[i])) {
            step();
        }
    }
    rec.glyphs = std::exchange(rec.primitives, std::move(others));
    if (count > 0) {
        rec.primitives.push_back(rec.glyphs.at(0));
        rec.primitives.back().text.assign(bytes, bytes + count);
    }
}

// --- SDL --------------------------------------------------------------------------------------

void SDL_GL_SwapBuffers() {
    log("swap");
    rec.frames.push_back(seen(false));
    push(rec.script[static_cast<int>(rec.frames.size())]);
}
int SDL_PollEvent(SDL_Event* event) {
    const bool found = !rec.events.empty();
    if (found) {
        *event = rec.events.front();
        rec.events.pop_front();
    }
    return found ? 1 : 0;
}
int SDL_PushEvent(SDL_Event* event) { return rec.events.push_back(*event), 0; }
Uint32 SDL_GetTicks() { return rec.now; }
void SDL_Delay(Uint32 ms) { log("delay " + std::to_string(ms)), rec.now += ms; }
int SDL_Init(Uint32 flags) {
    problem(flags != (SDL_INIT_VIDEO | SDL_INIT_AUDIO), "other parts of SDL started");
    log("init");
    return 0;
}
void SDL_Quit() { log("quit"); }
const SDL_VideoInfo* SDL_GetVideoInfo() {
    static SDL_PixelFormat format;
    static SDL_VideoInfo info;
    format.BitsPerPixel = 32;
    info.vfmt = &format;
    info.current_w = rec.screen_width, info.current_h = rec.screen_height;
    return &info;
}
SDL_Surface* SDL_GetVideoSurface() {
    static SDL_Surface surface;
    surface.w = rec.screen_width, surface.h = rec.screen_height;
    return rec.no_surface ? nullptr : &surface;
}
SDL_Surface* SDL_SetVideoMode(int width, int height, int depth, Uint32 flags) {
    log("mode " + std::to_string(width) + "x" + std::to_string(height) + "x" +
        std::to_string(depth) + ((flags & SDL_OPENGL) != 0 ? " gl" : "") +
        ((flags & SDL_FULLSCREEN) != 0 ? " full" : ""));
    rec.screen_width = width, rec.screen_height = height;
    return SDL_GetVideoSurface();
}
void SDL_WM_SetCaption(const char* title, const char*) { log(std::string("caption ") + title); }
SDL_Surface* IMG_Load(const char* name) {
    const image file = rec.files.emplace(name, image{2, 2, 4}).first->second;
    rec.loads.emplace_back(name);
    return file.width == 0 ? nullptr : SDL_CreateRGBSurface(
        SDL_SWSURFACE, file.width, file.height, file.bytes_per_pixel * 8, 0, 0, 0, 0);
}

// --- audio player and uploader ----------------------------------------------------------------

int32_t player_init(const char* music_dir) { return log(std::string("player ") + music_dir), -2; }
void player_destroy() { log("player off"); }
void player_play_sound(uint32_t id) { log("sound " + std::to_string(id)); }
int32_t player_music_start() { return log("music on"), -1; }
void player_music_stop() { log("music off"); }

int32_t poster_send_replay(const uint8_t* data, size_t length, char** information) {
    rec.uploaded.assign(data, data + length);
    *information = rec.upload_result != 0 ? nullptr : strdup("Thank you\n100%s");
    return rec.upload_result;
}
// clang-format on

// --- for the tests ----------------------------------------------------------------------------

namespace {

std::string number(double value, double precision = 10) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", std::round(value * precision) / precision + 0.0);
    return text;
}

// The least and the greatest of one coordinate of the vertices.
std::array<double, 2> range(const primitive& drawn, double drawn_vertex::*coordinate) {
    const auto [least, greatest] = std::minmax_element(
        drawn.vertices.begin(), drawn.vertices.end(),
        [&](const auto& a, const auto& b) { return a.*coordinate < b.*coordinate; });
    return {(*least).*coordinate, (*greatest).*coordinate};
}

std::string describe(const primitive& drawn) {
    const auto [left, right] = range(drawn, &drawn_vertex::x);
    const auto [bottom, top] = range(drawn, &drawn_vertex::y);
    const auto [s0, s1] = range(drawn, &drawn_vertex::s);
    const auto [t0, t1] = range(drawn, &drawn_vertex::t);
    const auto place = [&drawn](double x, double y) {
        return " at " + number(x) + "," + number(drawn.y_down ? rec.viewport[3] - y : y) + " ";
    };
    std::string look = drawn.color == rgba{1, 0, 0, 1} ? " red" : "";
    if (look.empty() && drawn.color != rgba{1, 1, 1, 1}) {
        for (const float channel : drawn.color) {
            look += (look.empty() ? " #" : ",") + number(channel);
        }
    }
    look += drawn.additive ? " added" : "";
    if (!drawn.text.empty()) {
        const int font = drawn.textured ? drawn.texture : -1;
        const char* quotes = font == TEXTURE_FONT           ? "''"
                             : font == TEXTURE_FONT_NUMBERS ? "[]"
                                                            : "??";
        return quotes[0] + drawn.text + quotes[1] + place(left, top) + number(top - bottom) + look;
    }
    const std::string centre = place((left + right) / 2, (bottom + top) / 2);
    if (!drawn.textured || drawn.texture < 0 || drawn.vertices.size() != 4) {
        return "plain " + std::to_string(drawn.kind) + " " + std::to_string(drawn.vertices.size()) +
               centre + number((right - left) / 2) + "x" + number((top - bottom) / 2) + look +
               (drawn.kind == GL_LINE_LOOP ? " width " + number(drawn.line_width) : "") +
               (drawn.textured && drawn.texture >= 0 ? " TEXTURED" : "");
    }
    drawn_vertex up{}, across{};  // from the picture's middle to its top and to its right
    for (const drawn_vertex& corner : drawn.vertices) {
        const double upward = t1 > t0 ? (t0 + t1 - 2 * corner.t) / (t1 - t0) / 4 : 0;
        const double rightward = s1 > s0 ? (2 * corner.s - s0 - s1) / (s1 - s0) / 4 : 0;
        up.x += upward * corner.x, up.y += upward * corner.y;
        across.x += rightward * corner.x, across.y += rightward * corner.y;
    }
    const double turn = std::atan2(-up.x, up.y) * 180 / M_PI;
    const std::string turned = number(turn < -0.05 ? turn + 360 : turn);
    const bool whole = t0 == 0 && s0 == 0 && t1 == 1 && s1 == 1;
    return std::filesystem::path(rec.images[drawn.texture].file).stem().string() + centre +
           number(std::hypot(across.x, across.y)) + "x" + number(std::hypot(up.x, up.y)) +
           (turned == "0" ? "" : " turned " + turned) +
           (across.x * up.y - across.y * up.x < 0 ? " mirrored" : "") +
           (whole ? "" : " s " + number(s0, 1e6) + "-" + number(s1, 1e6)) + look;
}

}  // namespace

strings seen(bool white) {
    strings lines;
    for (const primitive& drawn : std::exchange(rec.primitives, {})) {
        lines.push_back(describe(drawn));
    }
    problem(rec.stacks[0].size() + rec.stacks[1].size() != 2 || rec.mode != 0, "matrices left");
    problem(rec.open || rec.compiling != 0, "begin or list left open");
    problem(rec.blend != RESTING_BLEND || !rec.enabled[GL_BLEND] || rec.enabled[GL_LIGHTING],
            "odd blend left");
    problem(white && rec.color != rgba{1, 1, 1, 1}, "colour left");
    const strings problems = std::exchange(rec.problems, {});
    lines.insert(lines.end(), problems.begin(), problems.end());
    return lines;
}

void start_recording(int width, int height) {
    rec = recorder();
    rec.stacks = {{{IDENTITY}, {IDENTITY}}};
    init_video(width, height, 0);
    load_textures();
    font_init();
    rec.loads.clear();
    rec.trace.clear();
    rec.error_reads = 0;
}

void push(const std::string& words) {
    static const std::map<std::string, int> keys{{"Up", SDLK_UP},         {"Down", SDLK_DOWN},
                                                 {"Return", SDLK_RETURN}, {"Escape", SDLK_ESCAPE},
                                                 {"Tab", SDLK_TAB},       {"Back", SDLK_BACKSPACE},
                                                 {"Space", SDLK_SPACE},   {"Shift", SDLK_LSHIFT},
                                                 {"RShift", SDLK_RSHIFT}, {"Ctrl", SDLK_LCTRL}};
    static const std::map<std::string, int> others{
        {"close", SDL_QUIT}, {"resize", SDL_VIDEORESIZE}, {"mouse", SDL_MOUSEMOTION}};
    std::istringstream in(words);
    for (std::string word; in >> word;) {
        const bool pressed = word[0] == '+';
        const std::string name = word.substr(pressed ? 1 : 0);
        const int key = keys.count(name) != 0 ? keys.at(name) : static_cast<uint8_t>(name[0]);
        SDL_Event& event = rec.events.emplace_back();
        event.key.keysym.sym = static_cast<SDLKey>(key);
        event.type = static_cast<uint8_t>(others.count(name) != 0 ? others.at(name)
                                          : pressed               ? SDL_KEYDOWN
                                                                  : SDL_KEYUP);
    }
}

int count_trace(const std::string& entry) {
    return static_cast<int>(std::count(rec.trace.begin(), rec.trace.end(), entry));
}

std::string printed_by(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    const std::string errors = testing::internal::GetCapturedStderr();
    return testing::internal::GetCapturedStdout() + "|" + errors;
}

scratch_folder::scratch_folder() {
    std::string name = std::filesystem::temp_directory_path() / "quorvane-XXXXXX";
    folder = mkdtemp(name.data());
    std::filesystem::current_path(folder);
}

scratch_folder::~scratch_folder() {
    std::filesystem::current_path(before);
    std::filesystem::remove_all(folder);
}
