// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Scope guards for GL state that must be put back.

#pragma once

#include <GL/gl.h>

// Saves the current matrix for the life of the guard.
class matrix_guard {
public:
    matrix_guard() { glPushMatrix(); }
    ~matrix_guard() { glPopMatrix(); }
    matrix_guard(const matrix_guard&) = delete;
    matrix_guard& operator=(const matrix_guard&) = delete;
};

// Additive blending for the life of the guard, then the resting blend function.
class additive_guard {
public:
    additive_guard() { glBlendFunc(GL_SRC_ALPHA, GL_ONE); }
    ~additive_guard() { glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA); }
    additive_guard(const additive_guard&) = delete;
    additive_guard& operator=(const additive_guard&) = delete;
};
