// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Text from two bitmap fonts: a general one of 256 cells and a large one of digits. Every character
// is a display list that draws a cell and moves on by its width. Callers set a projection in
// pixels with y down, the colour and blending. x and y are the top-left corner of the first cell;
// `scale` multiplies the cell (32 x 32, digits 102 x 72). A null format draws nothing; text is cut
// at 255 bytes. Bytes are Latin-1.

#pragma once

#include <cstdint>

void font_init();     // builds the lists; needs the textures of this video mode
void font_destroy();  // deletes them

[[gnu::format(printf, 4, 5)]] void font_print(float x, float y, float scale, const char* format,
                                              ...);

// As font_print, at most `count` characters; a negative count draws all.
[[gnu::format(printf, 4, 6)]] void font_print_n(float x, float y, float scale, const char* format,
                                                int32_t count, ...);

// With the digits font; every other character is a blank cell.
[[gnu::format(printf, 4, 5)]] void font_print_digits(float x, float y, float scale,
                                                     const char* format, ...);
