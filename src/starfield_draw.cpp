// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include <GL/gl.h>

#include "assertion.h"
#include "gl_guard.h"
#include "starfield.h"

void starfield_draw(const starfield* starfield) {
    assert(starfield);
    glDisable(GL_TEXTURE_2D);
    glColor3f(1.0F, 1.0F, 1.0F);
    const matrix_guard matrix;
    glRotated(starfield->rotation * 360.0, 0.0, 0.0, 1.0);
    glBegin(GL_POINTS);
    double point_size = -1.0;
    for (const star& star : starfield->stars) {
        if (star.size != point_size) {
            glEnd();
            point_size = star.size;
            if (point_size > 0.0) {  // GL rejects 0; such a star keeps the size before it
                glPointSize(static_cast<float>(point_size));
            }
            glBegin(GL_POINTS);
        }
        glVertex3d(star.x, star.y, 0.0);
    }
    glEnd();
}
