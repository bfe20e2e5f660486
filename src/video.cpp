// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "video.h"

#include <GL/gl.h>
#include <SDL.h>

int32_t init_video(int32_t width, int32_t height, int32_t fullscreen) {
    const Uint32 flags = SDL_OPENGL | (fullscreen != 0 ? SDL_FULLSCREEN : 0U);
    const int bits_per_pixel = SDL_GetVideoInfo()->vfmt->BitsPerPixel;
    if (SDL_SetVideoMode(width, height, bits_per_pixel, flags) == nullptr) {
        return -1;
    }
    SDL_WM_SetCaption("Quorvane", nullptr);
    init_gl_state(width, height);
    return 0;
}

void init_gl_state(int32_t width, int32_t height) {
    glViewport(0, 0, width, height);
    glClearColor(0.2F, 0.2F, 0.2F, 0.0F);
    glClearDepth(1.0);
    glShadeModel(GL_SMOOTH);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, width, 0.0, height, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDepthFunc(GL_LESS);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthRange(-1.0, 1.0);
}
