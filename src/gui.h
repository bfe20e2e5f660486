// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The head-up display over a game, in pixels of the current video surface with the origin at the
// top left. The chain gauge's scale and its smoothed width are process-wide: they survive games
// and video modes.

#pragma once

#include <cstdint>

struct input;
struct ship;

// `time_left` and `now` in ms of game time. Needs a video surface.
void gui_draw(const ship* player, const input* input, int32_t time_left, int32_t now);

// A projection in pixels with y down, and its end. Both leave the model-view matrix selected.
void gui_ortho_begin(int32_t width, int32_t height);
void gui_ortho_end();

// The gauge along the bottom edge: a bar for `value` growing left (red) or right (blue) from the
// middle, and `number` in the centre.
void gui_draw_gauge(int32_t width, int32_t height, int32_t value, int32_t number, int32_t color);
