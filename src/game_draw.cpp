// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include <GL/gl.h>
#include <GL/glu.h>

#include <optional>

#include "assertion.h"
#include "game.h"
#include "gfx.h"
#include "gl_guard.h"
#include "gui.h"
#include "starfield.h"

namespace {

// The window's frame on which markers lie, in pixels from its edges; more at the bottom, above the
// gauge.
constexpr int32_t MARKER_INSET = 20;
constexpr int32_t MARKER_BOTTOM = 100;

constexpr double MARKER_RADIUS = 0.05;  // playfield units
constexpr int32_t MARKER_POINTS = 10;

// The frame's camera, read back once.
struct projection {
    GLdouble model_view[16];
    GLdouble projection[16];
    GLint viewport[4];
};

projection read_projection() {
    projection camera;
    glGetDoublev(GL_MODELVIEW_MATRIX, camera.model_view);
    glGetDoublev(GL_PROJECTION_MATRIX, camera.projection);
    glGetIntegerv(GL_VIEWPORT, camera.viewport);
    return camera;
}

bool within_window(vector point, int32_t width, int32_t height) {
    return point.x >= 0.0 && point.x <= width && point.y >= 0.0 && point.y <= height;
}

// Where the line from the window's middle to the point outside crosses the marker frame. A line
// towards a corner meets two edges; the first in the order top, bottom, left, right holds.
std::optional<vector> marker_place(vector outside, int32_t width, int32_t height) {
    const auto left = static_cast<double>(MARKER_INSET);
    const auto right = static_cast<double>(width - MARKER_INSET);
    const auto bottom = static_cast<double>(MARKER_BOTTOM);
    const auto top = static_cast<double>(height - MARKER_INSET);
    const vector middle = {static_cast<double>(width / 2), static_cast<double>(height / 2)};
    const double heading =
        math_heading_to_degrees(math_vector_angle({outside.x - middle.x, outside.y - middle.y}));
    struct edge {
        bool faced;
        vector from;
        vector to;
    };
    const edge edges[] = {
        {heading <= 90.0 || heading >= 270.0, {left, top}, {right, top}},
        {heading >= 90.0 && heading <= 270.0, {left, bottom}, {right, bottom}},
        {heading >= 0.0 && heading <= 180.0, {left, bottom}, {left, top}},
        {heading >= 180.0, {right, bottom}, {right, top}},
    };
    for (const edge& edge : edges) {
        vector point = {0.0, 0.0};
        if (edge.faced && math_line_intersect(middle, outside, edge.from, edge.to, &point) != 0 &&
            within_window(point, width, height)) {
            return point;
        }
    }
    return std::nullopt;
}

// A dot of the enemy's colour at the window's edge, towards an enemy outside of the view.
void draw_marker(const game* game, const ship* enemy, const projection& camera) {
    vector window = {0.0, 0.0};
    GLdouble depth = 0.0;
    gluProject(enemy->position.x, enemy->position.y, 0.0, camera.model_view, camera.projection,
               camera.viewport, &window.x, &window.y, &depth);
    if (within_window(window, game->width, game->height)) {
        return;
    }
    const std::optional<vector> place = marker_place(window, game->width, game->height);
    if (!place) {
        return;
    }
    vector centre = {0.0, 0.0};
    if (gluUnProject(place->x, place->y, 0.0, camera.model_view, camera.projection, camera.viewport,
                     &centre.x, &centre.y, &depth) != GL_TRUE) {
        return;  // a view of no size
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    const matrix_guard matrix;
    if (enemy->color == COLOR_BLUE) {
        glColor3f(0.0F, 0.0F, 1.0F);
    } else {
        glColor3f(1.0F, 0.0F, 0.0F);
    }
    glBegin(GL_POLYGON);
    for (int32_t k = 0; k < MARKER_POINTS; ++k) {
        const double angle = MATH_TWO_PI * k / MARKER_POINTS;
        glVertex2d(centre.x + MARKER_RADIUS * math_cos(angle),
                   centre.y + MARKER_RADIUS * math_sin(angle));
    }
    glEnd();
    glColor3f(1.0F, 1.0F, 1.0F);
}

}  // namespace

void game_draw(const game* game) {
    assert(game);
    glClearColor(0.0F, 0.0F, 0.0F, 0.0F);
    glColor3f(1.0F, 1.0F, 1.0F);
    gfx_begin_frame(game->gfx, game->players[0].position, game->width, game->height);
    const projection camera = read_projection();
    gfx_draw_background(game->gfx);
    starfield_draw(game->starfield);
    gfx_draw_black_hole(game->gfx, game->radius, game->time);
    glEnable(GL_TEXTURE_2D);
    for (int32_t i = 0; i < game->player_count; ++i) {
        gfx_draw_ship(game->gfx, &game->players[i], game->time);
    }
    for (int32_t i = 0; i < game->ship_count; ++i) {
        const ship* ship = &game->ships[i];
        gfx_draw_ship(game->gfx, ship, game->time);
        if (ship->alive != 0) {
            draw_marker(game, ship, camera);
        }
    }
    for (int32_t i = 0; i < game->shot_count; ++i) {
        if (game->shots[i].active != 0) {
            gfx_draw_shot(game->gfx, &game->shots[i], game->time);
        }
    }
    glDisable(GL_TEXTURE_2D);
    gui_draw(&game->players[0], game->input, GAME_DURATION - game->time, game->time);
}
