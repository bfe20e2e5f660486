// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The pictures of the current video mode, addressed by small numbers. The module holds only the GL
// names; assets.cpp says which file has which id.

#pragma once

#include <cstdint>

#include "texture_id.h"

void tex_init();     // makes the GL names of a video mode
void tex_destroy();  // deletes them

// Decodes the image file and uploads it under the id. Returns 0; -2 if a GL error is pending, -3
// if the file cannot be decoded, -4 for a pixel format that is not 1, 3 or 4 bytes, -5 if the GL
// refuses it (the last two print the file name on standard output). The picture's top row becomes
// texture row t = 0. Leaves GL_TEXTURE_2D enabled.
int32_t tex_load(const char* filename, texture_id name);

// Binds the picture to GL_TEXTURE_2D. Neither checks the id nor enables texturing.
void tex_bind(texture_id name);
