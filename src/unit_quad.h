// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The quad that every sprite of the scene is drawn as.

#pragma once

#include <GL/gl.h>

// Corners at x, y = +-1; the picture's top row lies at y = +1. Callers size it by scaling.
inline void draw_unit_quad() {
    glBegin(GL_QUADS);
    glTexCoord2f(0.0F, 1.0F);
    glVertex2f(-1.0F, -1.0F);
    glTexCoord2f(0.0F, 0.0F);
    glVertex2f(-1.0F, 1.0F);
    glTexCoord2f(1.0F, 0.0F);
    glVertex2f(1.0F, 1.0F);
    glTexCoord2f(1.0F, 1.0F);
    glVertex2f(1.0F, -1.0F);
    glEnd();
}
