// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The video mode and the GL state that menus and scenes start from.

#pragma once

#include <cstdint>

// Sets the video mode (pixels) and the GL state: 0, or -1 if the mode cannot be set.
int32_t init_video(int32_t width, int32_t height, int32_t fullscreen);

// The GL state alone, all of it: SDL may or may not have kept the context of an earlier mode.
void init_gl_state(int32_t width, int32_t height);
