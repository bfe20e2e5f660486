// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "texture.h"

#include <GL/gl.h>
#include <SDL_image.h>

#include <array>
#include <cstdio>
#include <memory>
#include <optional>

#include "assertion.h"

namespace {

// GL names of the current video mode, by texture id.
std::array<GLuint, TEXTURE_COUNT> textures;

struct surface_freer {
    void operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }
};

// A palettised picture is taken as it lies in memory: its palette indices become luminance.
std::optional<GLenum> pixel_format(int bytes_per_pixel) {
    switch (bytes_per_pixel) {
        case 4:
            return GL_RGBA;
        case 3:
            return GL_RGB;
        case 1:
            return GL_LUMINANCE;
        default:
            return std::nullopt;
    }
}

}  // namespace

void tex_init() { glGenTextures(TEXTURE_COUNT, textures.data()); }

void tex_destroy() { glDeleteTextures(TEXTURE_COUNT, textures.data()); }

int32_t tex_load(const char* filename, texture_id name) {
    assert(filename);
    assert(name >= 0 && name < TEXTURE_COUNT);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, textures[static_cast<size_t>(name)]);
    if (glGetError() != GL_NO_ERROR) {
        return -2;
    }
    const std::unique_ptr<SDL_Surface, surface_freer> surface(IMG_Load(filename));
    if (!surface) {
        return -3;
    }
    const auto format = pixel_format(surface->format->BytesPerPixel);
    if (!format) {
        std::printf("failed to load texture: %s\n", filename);
        return -4;
    }
    // SDL pads rows to 4 bytes, which is what GL expects unless told otherwise.
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(*format), surface->w, surface->h, 0, *format,
                 GL_UNSIGNED_BYTE, surface->pixels);
    if (glGetError() != GL_NO_ERROR) {
        std::printf("failed to set texture: %s\n", filename);
        return -5;
    }
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glBindTexture(GL_TEXTURE_2D, 0);
    return 0;
}

void tex_bind(texture_id name) {
    glBindTexture(GL_TEXTURE_2D, textures[static_cast<size_t>(name)]);
}
