// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The quads that pictures are drawn as: the sprites of the scene, where y points up, and whole
// pictures on the screen, where y points down.

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

// A picture with its top-left corner at the current position, upright where y points down.
inline void draw_picture(float width, float height) {
    glBegin(GL_QUADS);
    glTexCoord2f(0.0F, 0.0F);
    glVertex2f(0.0F, 0.0F);
    glTexCoord2f(0.0F, 1.0F);
    glVertex2f(0.0F, height);
    glTexCoord2f(1.0F, 1.0F);
    glVertex2f(width, height);
    glTexCoord2f(1.0F, 0.0F);
    glVertex2f(width, 0.0F);
    glEnd();
}
