// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "font.h"

#include <GL/gl.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "gl_guard.h"
#include "texture.h"

namespace {

constexpr GLsizei CHARACTER_COUNT = 256;
constexpr GLsizei DIGIT_COUNT = 11;  // the last is the blank cell

constexpr float CELL_SIZE = 32.0F;
constexpr float DIGIT_WIDTH = 102.0F;
constexpr float DIGIT_HEIGHT = 72.0F;

GLuint font_list_base;
GLuint digit_list_base;

// At most 255 characters and the terminator; longer output is cut.
struct formatted_text {
    char bytes[256];
};

[[gnu::format(printf, 1, 0)]] formatted_text format_text(const char* format,
                                                         std::va_list arguments) {
    formatted_text text;
    if (std::vsnprintf(text.bytes, sizeof(text.bytes), format, arguments) < 0) {
        text.bytes[0] = '\0';
    }
    return text;
}

// Calls one display list per byte, from `list_base` on. Moving comes before scaling, so x and y
// are not scaled.
void call_lists(float x, float y, float scale, GLuint list_base, const char* text, size_t count) {
    const matrix_guard matrix;
    glTranslatef(x, y, 0.0F);
    glListBase(list_base);
    glScalef(scale, scale, 1.0F);
    glCallLists(static_cast<GLsizei>(count), GL_UNSIGNED_BYTE, text);
}

void draw_text(float x, float y, float scale, const char* text, int32_t count) {
    size_t length = std::strlen(text);
    if (count >= 0) {
        length = std::min(length, static_cast<size_t>(count));
    }
    glEnable(GL_TEXTURE_2D);
    tex_bind(TEXTURE_FONT);
    call_lists(x, y, scale, font_list_base, text, length);
}

void compile_character(int32_t code) {
    const float s = static_cast<float>(code % 16) / 16.0F;
    const float t = static_cast<float>(code / 16) / 16.0F;
    constexpr float STEP = 0.0625F;
    glNewList(font_list_base + static_cast<GLuint>(code), GL_COMPILE);
    glBegin(GL_QUADS);
    glTexCoord2f(s, t);
    glVertex2f(0.0F, 0.0F);
    glTexCoord2f(s + STEP, t);
    glVertex2f(CELL_SIZE, 0.0F);
    glTexCoord2f(s + STEP, t + STEP);
    glVertex2f(CELL_SIZE, CELL_SIZE);
    glTexCoord2f(s, t + STEP);
    glVertex2f(0.0F, CELL_SIZE);
    glEnd();
    glTranslatef(CELL_SIZE, 0.0F, 0.0F);
    glEndList();
}

// Texture rows 1.0 to 1.5625 are, by the repeat wrapping, the top 56.25 % of the picture.
void compile_digit(int32_t digit) {
    constexpr float TOP = 1.0F;
    constexpr float BOTTOM = 1.5625F;
    const bool blank = digit == DIGIT_COUNT - 1;
    const float left = static_cast<float>(digit) * 0.996F / 10.0F;
    const float right = left + 0.0996F;
    const auto corner = [&](float s, float t, float x, float y) {
        if (blank) {
            glTexCoord2f(0.5F, 1.8F);  // below the digits, where the picture is transparent
        } else {
            glTexCoord2f(s, t);
        }
        glVertex2f(x, y);
    };
    glNewList(digit_list_base + static_cast<GLuint>(digit), GL_COMPILE);
    glBegin(GL_QUADS);
    corner(left, TOP, 0.0F, 0.0F);
    corner(right, TOP, DIGIT_WIDTH, 0.0F);
    corner(right, BOTTOM, DIGIT_WIDTH, DIGIT_HEIGHT);
    corner(left, BOTTOM, 0.0F, DIGIT_HEIGHT);
    glEnd();
    glTranslatef(DIGIT_WIDTH, 0.0F, 0.0F);
    glEndList();
}

}  // namespace

void font_init() {
    font_list_base = glGenLists(CHARACTER_COUNT);
    tex_bind(TEXTURE_FONT);
    for (int32_t code = 0; code < CHARACTER_COUNT; ++code) {
        compile_character(code);
    }
    digit_list_base = glGenLists(DIGIT_COUNT);
    tex_bind(TEXTURE_FONT_NUMBERS);
    for (int32_t digit = 0; digit < DIGIT_COUNT; ++digit) {
        compile_digit(digit);
    }
}

void font_destroy() {
    glDeleteLists(font_list_base, CHARACTER_COUNT);
    glDeleteLists(digit_list_base, DIGIT_COUNT);
}

void font_print(float x, float y, float scale, const char* format, ...) {
    if (format == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    const formatted_text text = format_text(format, arguments);
    va_end(arguments);
    draw_text(x, y, scale, text.bytes, -1);
}

void font_print_n(float x, float y, float scale, const char* format, int32_t count, ...) {
    if (format == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, count);
    const formatted_text text = format_text(format, arguments);
    va_end(arguments);
    draw_text(x, y, scale, text.bytes, count);
}

void font_print_digits(float x, float y, float scale, const char* format, ...) {
    if (format == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    formatted_text text = format_text(format, arguments);
    va_end(arguments);
    const size_t length = std::strlen(text.bytes);
    std::replace_if(
        text.bytes, text.bytes + length, [](char c) { return c < '0' || c > '9'; }, '9' + 1);
    glEnable(GL_TEXTURE_2D);
    tex_bind(TEXTURE_FONT_NUMBERS);
    // Unsigned: a base below 48 wraps, and the sum with the byte comes out right.
    call_lists(x, y, scale, digit_list_base - '0', text.bytes, length);
}
