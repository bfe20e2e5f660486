// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The scene: camera, rings and layers of the hole, ships, shots, markers, and a whole frame.

#include "gfx.h"

#include "animation.h"
#include "game.h"
#include "recorder.h"

namespace {

// clang-format off
// A game that has not begun.
class Scene : public testing::Test {
protected:
    static void view(double pixels_per_unit) {
        glLoadIdentity();
        glTranslated(400, 300, 0);
        glScaled(pixels_per_unit, pixels_per_unit, 1);
    }
    strings ship_at(const ship* ship, int32_t time) {
        view(100);
        gfx_draw_ship(world->gfx, ship, time);
        return seen();
    }
    strings frame() {  // without stars
        game_draw(world.get());
        strings lines = seen();
        std::erase_if(lines, [](auto& line) { return line.rfind("plain 0 ", 0) == 0; });
        return lines;
    }
    void SetUp() override { start_recording(); }

    const owner<input> keys{input_init(nullptr), input_destroy};
    const owner<game> world{game_init(keys.get(), GAME_SHIP_COUNT, 800, 600), game_destroy};
    ship* const player = &world->players[0];
};

TEST_F(Scene, CameraFollowsAndZooms) {
    const struct {
        vector focus;
        int width, height;
        vector point;
        const char* place;
    } cases[] = {{{0, -2}, 800, 600, {0, -1.5}, "400,300"},
                 {{0, -2}, 800, 600, {1, -2.5}, "479.2,220.8"},
                 {{0, 0}, 801, 601, {10, 1}, "1301.5,390.2"},  // halves are whole pixels
                 {{10, 0}, 1280, 720, {8.5, -1}, "683.2,316.8"},
                 {{0, 25}, 800, 600, {1, 18.75}, "355,300"}};  // thrown out: a mirrored view
    for (const auto& c : cases) {
        start_recording(c.width, c.height);
        glDisable(GL_TEXTURE_2D);
        gfx_begin_frame(world->gfx, c.focus, c.width, c.height);
        glBegin(GL_POINTS), glVertex2d(c.point.x, c.point.y), glEnd();
        EXPECT_EQ(seen(), strings{std::string("plain 0 1 at ") + c.place + " 0x0"});
        EXPECT_EQ(rec.trace, strings{"clear"});
    }
}

TEST_F(Scene, BlackHoleHasRingsOneDiscAndTurningLayers) {
    const int widths[] = {5, 4, 4, 3, 3, 2, 2, 1, 1, 1};
    for (const auto& [radius, rings] : {std::pair{10, 10}, {9, 9}, {1, 1}, {0, 0}}) {
        view(10);
        glDisable(GL_TEXTURE_2D);
        gfx_draw_black_hole(world->gfx, radius == 0 ? 0.5 : radius, 4230);
        EXPECT_TRUE(rec.enabled[GL_TEXTURE_2D]);
        strings expected;
        for (int i = 0; i < rings; i++) {
            const int r = 10 * (radius - i);
            char line[96];
            std::snprintf(line, sizeof line, "plain 9 126 at 400,300 %dx%d #0,0,0,0.3", r, r);
            expected.resize(static_cast<size_t>(i) + 1, line);  // a disc below the first ring
            std::snprintf(line, sizeof line, "plain 2 126 at 400,300 %dx%d red", r, r);
            expected.push_back(line + (" width " + std::to_string(widths[i])));
        }
        for (const char* layer : {"bg_twirl_big at 400,300 100x100 turned 317.7 #1,1,1,0.1",
                                  "bg_twirl_big at 400,300 200x200 turned 275.4 #1,0.7,0.7,0.1",
                                  "bg_black_hole_ray at 400,300 30x30 turned 190.8",
                                  "bg_black_hole_ray at 400,300 30x30 turned 84.6",
                                  "bg_black_hole_ray at 400,300 60x60 turned 338.4 #1,1,1,0.5",
                                  "bg_black_hole at 400,300 10x10"}) {
            expected.emplace_back(layer);
        }
        EXPECT_EQ(seen(), expected);
    }
    gfx_draw_circle(world->gfx, 1);
    EXPECT_EQ(seen(), strings{"plain 2 126 at 400,300 10x10 red width 5"}) << "textured";
}

TEST_F(Scene, ShipsShowShieldSpriteAndFlashes) {
    player->position = {1, 2};
    player->angle = MATH_PI;  // to the left: a quarter turn from the picture's top
    EXPECT_EQ(ship_at(player, 4800), (strings{"player_shield_blue_1 at 500,500 60x60",
                                              "player_ship_1 at 500,500 60x60 turned 90"}));
    animation_restart(player->shield_flash, 4800);
    animation_restart(player->muzzle_flash, 4800);
    EXPECT_EQ(ship_at(player, 4800),
              (strings{"player_shield_blue_1 at 500,500 60x60",
                       "player_shield_flash_1 at 500,500 60x60",
                       "player_ship_1 at 500,500 60x60 turned 90",
                       "player_muzzle_flash at 485,500 30x30 turned 90 added"}));
    player->alive = 0;  // lost without an explosion: stays, in red
    EXPECT_EQ(ship_at(player, 6000), (strings{"player_shield_blue_1 at 500,500 60x60 red",
                                              "player_ship_1 at 500,500 60x60 turned 90 red"}));
    world->time = 6000;
    game_kill_ship(world.get(), player, 0);
    EXPECT_EQ(ship_at(player, 6249).at(1), "enemy_explosion_4 at 500,500 60x60 turned 90 red");
    ship* enemy = game_spawn_ship(world.get(), COLOR_RED);
    enemy->position = {0, -1};
    enemy->angle = MATH_HALF_PI;
    EXPECT_EQ(ship_at(enemy, 6000), strings{"enemy_red at 400,200 30x30"});
    game_kill_ship(world.get(), enemy, 0);
    EXPECT_EQ(ship_at(enemy, 6249), strings{"enemy_explosion_4 at 400,200 60x60"});
    rec.calls = 0;
    for (const ship* gone : {enemy, player, &world->ships[50]}) {
        gfx_draw_ship(world->gfx, gone, 6250);
    }
    EXPECT_EQ(rec.calls, 0) << "GL calls for what shows nothing";
}

TEST_F(Scene, ShotsAddTheirLightAndStretchWithSpeed) {
    const std::tuple<int, int, int, const char*> cases[] = {
        {0, COLOR_BLUE, -1, "player_shot_blue_1 at 300,300 40x40"},
        {0, COLOR_RED, -1, "player_shot_red_1 at 300,300 40x40"},
        {0, COLOR_BLUE, ANIMATION_SHOT_BLUE, "player_shot_blue_2 at 300,300 40x40"},
        {0, COLOR_RED, ANIMATION_SHOT_RED, "player_shot_red_2 at 300,300 40x40"},
        {1, COLOR_BLUE, -1, "shot_enemy at 300,300 10x22.5"},
        {1, COLOR_RED, -1, "shot_enemy2 at 300,300 10x22.5"}};
    for (const auto& [from_enemy, color, type, expected] : cases) {
        view(100);
        const owner<animation> anim{type < 0 ? nullptr : animation_init(type, 0),
                                    animation_destroy};
        const shot shot{.position = {-1, 0}, .velocity = {3, -4}, .age = 0, .animation = anim.get(),
                        .angle = 0, .from_enemy = from_enemy, .color = color, .active = 1};
        gfx_draw_shot(world->gfx, &shot, 150);
        EXPECT_FALSE(rec.enabled[GL_TEXTURE_2D]);
        EXPECT_EQ(seen(), strings{std::string(expected) + " turned 270 added"});
    }
}

TEST_F(Scene, EnemiesOutOfViewHaveMarkersAtTheEdge) {
    player->position = {0, 0};  // 90 pixels a unit around (400, 300)
    game_spawn_ship(world.get(), COLOR_BLUE);  // in view
    ship* enemy = game_spawn_ship(world.get(), COLOR_RED);
    const std::pair<vector, const char*> cases[] = {  // enemy and marker in window pixels
        {{400, 500}, ""}, {{0, 300}, ""}, {{800, 300}, ""}, {{400, 600}, ""}, {{400, 0}, ""},
        {{-10, 300}, "20,300"}, {{810, 300}, "780,300"}, {{400, 700}, "400,580"},
        {{400, -50}, "400,100"}, {{-398, 860}, "1,580"}, {{1198, 860}, "799,580"},
        {{-401, 860}, "20,565.7"}, {{1201, 860}, "780,565.7"},  // past the top edge's end
        {{-398, -100}, "1,100"}, {{-420, -100}, "20,114.6"},
        {{1198, -100}, "799,100"}, {{1220, -100}, "780,114.6"}};
    for (const auto& [place, marker] : cases) {
        for (const int color : {COLOR_BLUE, COLOR_RED}) {
            enemy->position = {(place.x - 400) / 90, (place.y - 300) / 90};
            enemy->color = color;
            strings markers = frame();
            std::erase_if(markers, [](auto& line) { return line.rfind("plain 9 10 ", 0) != 0; });
            const std::string expected = std::string("plain 9 10 at ") + marker + " 4.5x4.3" +
                                         (color == COLOR_RED ? " red" : " #0,0,1,1");
            EXPECT_EQ(markers, *marker == '\0' ? strings() : strings{expected});
        }
    }
}

TEST_F(Scene, DrawsItsLayersInOrderInEveryFrame) {
    world->radius = 2;
    for (const int color : {COLOR_BLUE, COLOR_RED}) {
        game_spawn_ship(world.get(), color)->position = {-9, 0};
    }
    world->shots[3].active = 1;
    const strings expected{
        "bg_space", "plain 9 126", "plain 2 126", "plain 2 126", "bg_twirl_big", "bg_twirl_big",
        "bg_black_hole_ray", "bg_black_hole_ray", "bg_black_hole_ray", "bg_black_hole",
        "player_shield_blue_1", "player_ship_1", "enemy_blue", "plain 9 10", "enemy_red",
        "plain 9 10", "player_shot_blue_1", "'0.00'", "[1500::::::]", "[:::::::::0]", "[0]",
        "gui_gauge_bar", "gui_gauge"};
    for (int i = 0; i < 2; i++) {  // the second finds the state that the first left
        rec.matrix_reads = 0;
        strings layers = frame();
        EXPECT_EQ(layers.at(0), "bg_space at 400,418.8 1584x1584");
        for (std::string& layer : layers) {
            layer.resize(std::min(layer.find(" at "), layer.size()));
        }
        EXPECT_EQ(layers, expected);
        EXPECT_EQ(rec.matrix_reads, 2) << "projection and model-view, whatever the enemies";
        EXPECT_TRUE(rec.enabled[GL_TEXTURE_2D]) << "the next background needs it";
    }
    EXPECT_EQ(rec.trace, strings(2, "clear black"));
    const auto calls_with = [this](int32_t ships, int32_t shots) {
        const auto all_ships = std::exchange(world->ship_count, ships);
        const auto all_shots = std::exchange(world->shot_count, shots);
        rec.calls = 0;
        frame();
        world->ship_count = all_ships;
        world->shot_count = all_shots;
        return rec.calls;
    };
    EXPECT_EQ(calls_with(2, 4), calls_with(100, 100)) << "empty slots cost GL calls";
}
// clang-format on

}  // namespace
