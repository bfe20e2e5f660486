// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What only a real GL can answer: pictures with known pixels are drawn and single points of the
// frame are read back. Needs a display and runs in the project's root.

#include <GL/gl.h>
#include <SDL.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "animation.h"
#include "font.h"
#include "game.h"
#include "gfx.h"
#include "gui.h"
#include "texture.h"
#include "video.h"

namespace {

using colour = std::array<int, 3>;

// A picture with three bytes a pixel; `paint` is asked for column and row, row 0 at the top.
void load_picture(texture_id id, int width, int height, colour (*paint)(int, int)) {
    const std::string path =
        std::filesystem::temp_directory_path() / ("quorvane-" + std::to_string(getpid()) + ".ppm");
    std::ofstream out(path, std::ios::binary);
    out << "P6\n" << width << ' ' << height << "\n255\n";
    for (int i = 0; i < width * height; ++i) {
        for (const int channel : paint(i % width, i / width)) {
            out.put(static_cast<char>(channel));
        }
    }
    out.close();
    EXPECT_EQ(tex_load(path.c_str(), id), 0);
    std::filesystem::remove(path);
}

// Window pixels, from the bottom left.
void expect_pixel(int x, int y, const colour& expected, const char* what) {
    std::array<GLubyte, 4> got{};
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, got.data());
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(got[i], expected[i], 3) << what << ", channel " << i << " at " << x << ',' << y;
    }
}

// Sets the mode and clears the frame. The window's buffers take the new size at a swap only.
void begin(int width, int height) {
    ASSERT_EQ(init_video(width, height, 0), 0) << SDL_GetError();
    SDL_GL_SwapBuffers();
    tex_init();
    glClear(GL_COLOR_BUFFER_BIT);
    glEnable(GL_TEXTURE_2D);
    glColor3f(1, 1, 1);
}

class RealGl : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO), 0) << SDL_GetError(); }
    static void TearDownTestSuite() { SDL_Quit(); }
    void TearDown() override { EXPECT_EQ(glGetError(), GLenum{GL_NO_ERROR}); }
};

// Five columns: a row of three bytes a pixel does not fill whole words. The second round comes
// after a change of the video mode, and draws where the first mode's viewport did not reach.
TEST_F(RealGl, PicturesStandUprightInEveryMode) {
    const auto paint = [](int x, int y) { return colour{50 * x, 100 * y, 20 * (x + y)}; };
    for (const auto& [width, height] : {std::pair{640, 480}, {1024, 768}}) {
        begin(width, height);
        load_picture(TEXTURE_SHIP_1, 5, 3, paint);
        // The quad is 4 x 4 units: 500 x 300 pixels in the window's top right corner.
        glTranslated(width - 250, height - 150, 0);
        glScalef(125, 75, 1);
        animation* picture = animation_init(ANIMATION_SHIP, 0);
        animation_render(picture, 0);
        animation_destroy(picture);
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 5; ++x) {
                expect_pixel(width - 450 + 100 * x, height - 50 - 100 * y, paint(x, y), "texel");
            }
        }
        tex_destroy();
    }
}

TEST_F(RealGl, TextShowsTheCellsOfItsBytes) {
    constexpr int TOP = 599;
    begin(800, 600);
    // Ten cells of 102 x 72 from the top left; what lies below and behind must never show.
    const auto digit = [](int k) { return colour{25 * k, 250 - 25 * k, 100}; };
    load_picture(TEXTURE_FONT_NUMBERS, 1024, 128, [](int x, int y) {
        return y < 72 && x < 1020 ? colour{25 * (x / 102), 250 - 25 * (x / 102), 100}
                                  : colour{255, 255, 255};
    });
    load_picture(TEXTURE_FONT, 256, 256, [](int x, int y) {
        return colour{x / 16 * 16, y / 16 * 16, 50};
    });
    font_init();
    gui_ortho_begin(800, 600);
    font_print_digits(20, 15, 0.5F, "%s", "0123456789");
    font_print(20, 100, 0.75F, "%s", "Az09\x80\xff");
    gui_ortho_end();
    for (int k = 0; k < 10; ++k) {
        for (const auto& [x, y] : {std::pair{4, 3}, {25, 18}, {47, 32}}) {
            expect_pixel(20 + 51 * k + x, TOP - 15 - y, digit(k), "digit");
        }
    }
    const std::array codes = {0x41, 0x7a, 0x30, 0x39, 0x80, 0xff};
    for (int i = 0; i < 6; ++i) {
        for (const int inside : {4, 20}) {
            const int code = codes[static_cast<size_t>(i)];
            expect_pixel(20 + 24 * i + inside, TOP - 100 - inside,
                         {code % 16 * 16, code / 16 * 16, 50}, "letter");
        }
    }
    font_destroy();
    tex_destroy();
}

TEST_F(RealGl, TheMuzzleFlashBrightensWhatIsAhead) {
    ship one{};
    one.alive = 1;
    one.animation = animation_init(ANIMATION_SHIP, 0);
    one.muzzle_flash = animation_init(ANIMATION_MUZZLE_FLASH, 0);
    gfx* scene = gfx_init();
    for (const int32_t time : {0, 50}) {  // the flash lasts 50 ms
        begin(800, 600);
        load_picture(TEXTURE_SHIP_1, 8, 8, [](int, int) { return colour{100, 20, 0}; });
        load_picture(TEXTURE_MUZZLE_FLASH, 8, 8, [](int, int) { return colour{60, 60, 60}; });
        glTranslatef(400, 300, 0);
        glScalef(100, 100, 1);
        gfx_draw_ship(scene, &one, time);  // heading 0: to the right
        expect_pixel(435, 300, time == 0 ? colour{160, 80, 60} : colour{100, 20, 0}, "ahead");
        expect_pixel(365, 300, {100, 20, 0}, "behind");
        expect_pixel(400, 365, {51, 51, 51}, "beyond the ship");
        tex_destroy();
    }
    animation_destroy(one.animation);
    animation_destroy(one.muzzle_flash);
    gfx_destroy(scene);
}

}  // namespace
