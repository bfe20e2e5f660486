// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include <GL/gl.h>

#include "animation.h"
#include "assertion.h"
#include "gl_guard.h"
#include "quads.h"
#include "texture.h"

void animation_render(const animation* anim, int32_t time) {
    assert(anim);
    if (animation_is_done(anim, time) != 0) {
        return;
    }
    const int32_t frame_index = animation_frame_index(anim, time);
    assert(frame_index < anim->frame_count);
    tex_bind(anim->frames[frame_index]);
    const matrix_guard matrix;
    glTranslated(anim->offset_x, anim->offset_y, 0.0);
    glScaled(anim->scale_x, anim->scale_y, 0.0);
    draw_unit_quad();
}
