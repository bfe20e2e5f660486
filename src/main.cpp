// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "main.h"

#include <GL/gl.h>
#include <SDL.h>
#include <curl/curl.h>
#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

#include "font.h"
#include "game.h"
#include "input.h"
#include "interrupt.h"
#include "menu.h"
#include "menu_tree.h"
#include "player.h"
#include "poster.h"
#include "settings.h"
#include "texture.h"

namespace {

constexpr uint32_t MENU_FRAME_MS = 10;
// Of the name and file name entries, terminator included: one less than the settings can hold.
constexpr uint32_t TEXT_CAPACITY = SETTINGS_TEXT_MAX;

constexpr const char* REPLAY_FINISHED_TEXT =
    "\n        Replay finished!\n     Please press enter to\n           continue...";

// Process exit statuses of a failed start; as the shell sees them 255, 254 and 253.
constexpr int EXIT_NO_SDL = -1;
constexpr int EXIT_NO_VIDEO_MODE = -2;
constexpr int EXIT_NO_TEXTURES = -3;

// --- The asset table ------------------------------------------------------------------------

struct asset {
    texture_id name;
    const char* file;
};

// In load order. Ids that show the same picture load it once each: an animation's frames are
// distinct ids.
constexpr asset STATIC_ASSETS[] = {
    {TEXTURE_SHOT_BLUE, "graphics/player_shot_blue_1.png"},
    {TEXTURE_ENEMY_SHOT_BLUE, "graphics/shot_enemy.png"},
    {TEXTURE_SHOT_RED, "graphics/player_shot_red_1.png"},
    {TEXTURE_ENEMY_SHOT_RED, "graphics/shot_enemy2.png"},
    {TEXTURE_FONT, "graphics/gui_bitmap_font.png"},
    {TEXTURE_CHAIN_1, "graphics/gui_chain_1.png"},
    {TEXTURE_CHAIN_2, "graphics/gui_chain_2.png"},
    {TEXTURE_CHAIN_3, "graphics/gui_chain_3.png"},
    {TEXTURE_CHAIN_4, "graphics/gui_chain_4.png"},
    {TEXTURE_CHAIN_5, "graphics/gui_chain_5.png"},
    {TEXTURE_CHAIN_6, "graphics/gui_chain_6.png"},
    {TEXTURE_CHAIN_7, "graphics/gui_chain_7.png"},
    {TEXTURE_CURSOR, "graphics/gui_cursor.png"},
    {TEXTURE_FONT_NUMBERS, "graphics/font_numbers.png"},
    {TEXTURE_SPLASH, "graphics/game_splash.png"},
    {TEXTURE_MENU_KEYBOARD, "graphics/menu_keyboard.png"},
    {TEXTURE_MUZZLE_FLASH, "graphics/player_muzzle_flash.png"},
    {TEXTURE_TWIRL, "graphics/bg_twirl_big.png"},
    {TEXTURE_GAUGE, "graphics/gui_gauge.png"},
    {TEXTURE_BLACK_HOLE, "graphics/bg_black_hole.png"},
    {TEXTURE_BLACK_HOLE_RAY, "graphics/bg_black_hole_ray.png"},
    {TEXTURE_SPACE, "graphics/bg_space.jpg"},
    {TEXTURE_GAUGE_BAR, "graphics/gui_gauge_bar.png"},
};
constexpr asset SHOT_ASSETS[] = {
    {TEXTURE_PLAYER_SHOT_BLUE_1, "graphics/player_shot_blue_1.png"},
    {TEXTURE_PLAYER_SHOT_BLUE_2, "graphics/player_shot_blue_2.png"},
    {TEXTURE_PLAYER_SHOT_BLUE_3, "graphics/player_shot_blue_3.png"},
    {TEXTURE_PLAYER_SHOT_RED_1, "graphics/player_shot_red_1.png"},
    {TEXTURE_PLAYER_SHOT_RED_2, "graphics/player_shot_red_2.png"},
    {TEXTURE_PLAYER_SHOT_RED_3, "graphics/player_shot_red_3.png"},
};
constexpr asset SHIELD_ASSETS[] = {
    {TEXTURE_SHIELD_FLASH_1, "graphics/player_shield_flash_1.png"},
    {TEXTURE_SHIELD_FLASH_2, "graphics/player_shield_flash_2.png"},
    {TEXTURE_SHIELD_BLUE_1, "graphics/player_shield_blue_1.png"},
    {TEXTURE_SHIELD_BLUE_2, "graphics/player_shield_blue_2.png"},
    {TEXTURE_SHIELD_BLUE_3, "graphics/player_shield_blue_3.png"},
    {TEXTURE_SHIELD_BLUE_4, "graphics/player_shield_blue_4.png"},
    {TEXTURE_SHIELD_BLUE_5, "graphics/player_shield_blue_5.png"},
    {TEXTURE_SHIELD_BLUE_6, "graphics/player_shield_blue_6.png"},
    {TEXTURE_SHIELD_RED_1, "graphics/player_shield_red_1.png"},
    {TEXTURE_SHIELD_RED_2, "graphics/player_shield_red_2.png"},
    {TEXTURE_SHIELD_RED_3, "graphics/player_shield_red_3.png"},
    {TEXTURE_SHIELD_RED_4, "graphics/player_shield_red_4.png"},
    {TEXTURE_SHIELD_RED_5, "graphics/player_shield_red_5.png"},
    {TEXTURE_SHIELD_RED_6, "graphics/player_shield_red_6.png"},
};
constexpr asset SHIP_ASSETS[] = {
    {TEXTURE_SHIP_1, "graphics/player_ship_1.png"},
    {TEXTURE_SHIP_2, "graphics/player_ship_2.png"},
    {TEXTURE_SHIP_3, "graphics/player_ship_1.png"},
    {TEXTURE_SHIP_4, "graphics/player_ship_2.png"},
};
constexpr asset RED_ENEMY_ASSETS[] = {
    {TEXTURE_ENEMY_RED_1, "graphics/enemy_red.png"},
    {TEXTURE_ENEMY_RED_2, "graphics/enemy_red.png"},
    {TEXTURE_ENEMY_RED_3, "graphics/enemy_red.png"},
    {TEXTURE_ENEMY_RED_4, "graphics/enemy_red.png"},
    {TEXTURE_ENEMY_RED_5, "graphics/enemy_red.png"},
};
constexpr asset BLUE_ENEMY_ASSETS[] = {
    {TEXTURE_ENEMY_BLUE_1, "graphics/enemy_blue.png"},
    {TEXTURE_ENEMY_BLUE_2, "graphics/enemy_blue.png"},
    {TEXTURE_ENEMY_BLUE_3, "graphics/enemy_blue.png"},
    {TEXTURE_ENEMY_BLUE_4, "graphics/enemy_blue.png"},
    {TEXTURE_ENEMY_BLUE_5, "graphics/enemy_blue.png"},
};
constexpr asset EXPLOSION_ASSETS[] = {
    {TEXTURE_EXPLOSION_1, "graphics/enemy_explosion_1.png"},
    {TEXTURE_EXPLOSION_2, "graphics/enemy_explosion_2.png"},
    {TEXTURE_EXPLOSION_3, "graphics/enemy_explosion_3.png"},
    {TEXTURE_EXPLOSION_4, "graphics/enemy_explosion_4.png"},
};

struct asset_group {
    int32_t code;  // of load_textures when a picture of the group cannot be loaded
    const char* title;
    std::span<const asset> assets;
};

constexpr asset_group ASSET_GROUPS[] = {
    {-1, "static", STATIC_ASSETS},       {-2, "shot", SHOT_ASSETS},
    {-3, "shield", SHIELD_ASSETS},       {-4, "player ship", SHIP_ASSETS},
    {-5, "red enemy", RED_ENEMY_ASSETS}, {-6, "blue enemy", BLUE_ENEMY_ASSETS},
    {-7, "explosion", EXPLOSION_ASSETS},
};

// --- Selections -----------------------------------------------------------------------------

struct settings_deleter {
    void operator()(settings* settings) const { settings_destroy(settings); }
};
struct menu_deleter {
    void operator()(menu* menu) const { menu_destroy(menu); }
};
struct input_deleter {
    void operator()(input* input) const { input_destroy(input); }
};
struct game_deleter {
    void operator()(game* game) const { game_destroy(game); }
};
struct free_deleter {
    void operator()(void* memory) const { std::free(memory); }
};
struct directory_closer {
    void operator()(DIR* directory) const { closedir(directory); }
};
using input_pointer = std::unique_ptr<input, input_deleter>;
using game_pointer = std::unique_ptr<game, game_deleter>;

void set_video_choice(shell* shell, int32_t width, int32_t height, int32_t fullscreen) {
    shell->settings->width = width;
    shell->settings->height = height;
    shell->settings->fullscreen = fullscreen;
    shell->reinit = 1;
}

// Acts on a result that no screen handles itself; true when the choice was confirmed.
bool confirmed(shell* shell, int32_t result) {
    if (result == MENU_RESIZE) {
        shell->reinit = 1;
    } else if (result == MENU_QUIT) {
        shell->running = 0;
    }
    return result == MENU_CONFIRM;
}

void play_game_with(shell* shell, input* input, const char* player_name) {
    play_game(shell->settings->width, shell->settings->height, shell->menu, input, player_name,
              &shell->running, &shell->reinit);
}

void start_game(shell* shell) {
    settings* settings = shell->settings;
    int32_t result = MENU_COMPLETE;
    while (result == MENU_COMPLETE) {
        result = menu_text_entry(shell->menu, "Player name: ", settings->name, TEXT_CAPACITY, 0);
    }
    if (!confirmed(shell, result)) {
        return;
    }
    settings_save(settings, SETTINGS_FILE);  // the name persists whatever the game does
    const input_pointer input(input_init(nullptr));
    play_game_with(shell, input.get(), settings->name);
}

void load_replay(shell* shell) {
    settings* settings = shell->settings;
    int32_t result = MENU_COMPLETE;
    while (result == MENU_COMPLETE) {
        result = menu_text_entry(shell->menu, "Replay file (TAB to complete):", settings->replay,
                                 TEXT_CAPACITY, 0);
        if (result == MENU_COMPLETE) {
            complete_replay_name(settings->replay, TEXT_CAPACITY);
        }
    }
    if (!confirmed(shell, result)) {
        return;
    }
    const input_pointer input(input_init(settings->replay));
    if (input_is_replay(input.get()) != 0) {
        play_game_with(shell, input.get(), "");
    }
}

// --- Sessions -------------------------------------------------------------------------------

// As the player wishes. The frame goes on, but not with a long wait.
void end_game(game* game) {
    game_quit(game);
    interrupt_set(true);
}

void play_until_over(game* game, input* input) {
    while (game_is_over(game) == 0) {
        poll_game_events(game, input);
        const int32_t time = input_tick(input);
        if (time < 0) {
            game_quit(game);
            break;
        }
        game_step(game, time);
        game_draw(game);
        SDL_GL_SwapBuffers();
    }
}

// Shows a screen over the final scene until it is left; the result that left it.
template <typename screen>
int32_t show_over_scene(const game* game, int32_t* running, int32_t* reinit, screen draw_screen) {
    while (true) {
        game_draw(game);
        const int32_t result = draw_screen();
        switch (result) {
            case MENU_CONFIRM:
            case MENU_CANCEL:
                return result;
            case MENU_RESIZE:
                *reinit = 1;
                return result;
            case MENU_QUIT:
                *running = 0;
                return result;
            default:
                SDL_GL_SwapBuffers();
                break;
        }
    }
}

void save_replay(const uint8_t* data, size_t length) {
    SDL_RWops* stream = SDL_RWFromFile(REPLAY_FILE, "wb");
    if (stream == nullptr) {
        std::printf("Error opening file \"%s\" for saving\n", REPLAY_FILE);
        return;
    }
    SDL_RWwrite(stream, data, 1, static_cast<int>(length));
    SDL_RWclose(stream);
}

// Posts the replay. The scoreboard's answer, or null when there is none to show.
std::unique_ptr<char, free_deleter> upload_replay(const uint8_t* data, size_t length) {
    char* reply = nullptr;
    const int32_t result = poster_send_replay(data, length, &reply);
    if (result != 0) {
        std::printf("Posting data failed: %s\n", curl_easy_strerror(static_cast<CURLcode>(result)));
    } else {
        std::printf("Posting data to the server succeeded!\n");
    }
    return std::unique_ptr<char, free_deleter>(reply);
}

void finish_live_game(const game* game, menu* menu, input* input, const char* player_name,
                      int32_t* running, int32_t* reinit) {
    const bool upload = show_over_scene(game, running, reinit, [menu] {
                            return menu_upload_prompt(menu);
                        }) == MENU_CONFIRM;
    uint8_t* image = nullptr;
    size_t length = 0;
    const auto score = static_cast<uint32_t>(game_get_score(game));
    const int32_t result = input_get_replay_data(input, player_name, score, &image, &length);
    if (result < 0) {
        std::printf("Error %d constructing replay data\n", result);
        return;
    }
    const std::unique_ptr<uint8_t, free_deleter> data(image);
    save_replay(data.get(), length);
    if (!upload) {
        return;
    }
    if (const auto reply = upload_replay(data.get(), length)) {
        show_over_scene(game, running, reinit,
                        [&] { return menu_message_screen(menu, reply.get()); });
    }
}

// --- The entry ------------------------------------------------------------------------------

void report_gl_error() {
    std::fprintf(stderr, "glGetError() == %d\n", static_cast<int>(glGetError()));
}

void run_menu(shell* shell) {
    while (shell->reinit == 0 && shell->running != 0) {
        int32_t selection_id = 0;
        const int32_t result = menu_poll_navigation(shell->menu, &selection_id);
        if (result == MENU_QUIT) {
            shell->running = 0;
        } else if (result == MENU_CONFIRM) {
            dispatch_selection(shell, selection_id);
        }
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glLoadIdentity();
        menu_draw(shell->menu);
        SDL_Delay(MENU_FRAME_MS);
        SDL_GL_SwapBuffers();
    }
}

// One video mode after the other until the player quits: 0, or the exit status of a failure.
int run_video_modes(shell* shell) {
    const settings* settings = shell->settings;
    while (shell->running != 0) {
        shell->reinit = 0;
        menu_reinit(shell->menu, settings->width, settings->height);
        if (const int32_t result =
                init_video(settings->width, settings->height, settings->fullscreen);
            result < 0) {
            std::fprintf(stderr, "Error %d initializing video to %dx%d\n", result, settings->width,
                         settings->height);
            report_gl_error();
            return EXIT_NO_VIDEO_MODE;
        }
        if (const int32_t result = load_textures(); result < 0) {
            std::fprintf(stderr, "Error %d loading textures\n", result);
            report_gl_error();
            return EXIT_NO_TEXTURES;
        }
        font_init();
        run_menu(shell);
        font_destroy();
        unload_textures();
    }
    return 0;
}

}  // namespace

int32_t init_video(int32_t width, int32_t height, int32_t fullscreen) {
    const Uint32 flags = SDL_OPENGL | (fullscreen != 0 ? SDL_FULLSCREEN : 0U);
    const int bits_per_pixel = SDL_GetVideoInfo()->vfmt->BitsPerPixel;
    if (SDL_SetVideoMode(width, height, bits_per_pixel, flags) == nullptr) {
        return -1;
    }
    SDL_WM_SetCaption("Quorvane", nullptr);
    init_gl_state(width, height);
    return 0;
}

void init_gl_state(int32_t width, int32_t height) {
    glViewport(0, 0, width, height);
    glClearColor(0.2F, 0.2F, 0.2F, 0.0F);
    glClearDepth(1.0);
    glShadeModel(GL_SMOOTH);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, width, 0.0, height, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDepthFunc(GL_LESS);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthRange(-1.0, 1.0);
}

int32_t load_textures() {
    tex_init();
    for (const asset_group& group : ASSET_GROUPS) {
        for (const asset& asset : group.assets) {
            if (const int32_t result = tex_load(asset.file, asset.name); result != 0) {
                std::fprintf(stderr, "Error %d loading %s textures\n", result, group.title);
                return group.code;
            }
        }
    }
    return 0;
}

void unload_textures() { tex_destroy(); }

void dispatch_selection(shell* shell, int32_t selection_id) {
    switch (selection_id) {
        case SELECTION_UNCONFIGURED:
            std::fprintf(stderr, "Unconfigured selection\n");
            break;
        case SELECTION_START_GAME:
            start_game(shell);
            break;
        case SELECTION_LOAD_REPLAY:
            load_replay(shell);
            break;
        case SELECTION_QUIT:
            shell->running = 0;
            break;
        case SELECTION_WINDOWED_800:
            set_video_choice(shell, 800, 600, 0);
            break;
        case SELECTION_WINDOWED_1024:
            set_video_choice(shell, 1024, 768, 0);
            break;
        case SELECTION_WINDOWED_1280:
            set_video_choice(shell, 1280, 720, 0);
            break;
        case SELECTION_FULLSCREEN_NATIVE:
            set_video_choice(shell, shell->native_width, shell->native_height, 1);
            break;
        case SELECTION_FULLSCREEN_800:
            set_video_choice(shell, 800, 600, 1);
            break;
        case SELECTION_FULLSCREEN_1024:
            set_video_choice(shell, 1024, 768, 1);
            break;
        case SELECTION_MUSIC_ON:
            shell->settings->music = 1;
            player_music_start();
            break;
        case SELECTION_MUSIC_OFF:
            shell->settings->music = 0;
            player_music_stop();
            break;
        default:
            std::fprintf(stderr, "Unknown selection!\n");
            break;
    }
}

void play_game(int32_t width, int32_t height, menu* menu, input* input, const char* player_name,
               int32_t* running, int32_t* reinit) {
    input_reset(input);
    interrupt_set(false);
    {
        const game_pointer game(game_init(input, GAME_SHIP_COUNT, width, height));
        play_until_over(game.get(), input);
        if (input_is_replay(input) != 0) {
            show_over_scene(game.get(), running, reinit,
                            [menu] { return menu_message_screen(menu, REPLAY_FINISHED_TEXT); });
        } else {
            finish_live_game(game.get(), menu, input, player_name, running, reinit);
        }
    }
    // Clears what a game may have left in the error flag: the next textures would be refused.
    glGetError();
}

void poll_game_events(game* game, input* input) {
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        switch (event.type) {
            case SDL_KEYDOWN:
                input_key_event(input, &event.key.keysym, 1);
                break;
            case SDL_KEYUP:
                if (event.key.keysym.sym == SDLK_ESCAPE) {
                    end_game(game);
                } else {
                    input_key_event(input, &event.key.keysym, 0);
                }
                break;
            case SDL_QUIT:
                end_game(game);
                break;
            default:
                break;
        }
    }
}

void complete_replay_name(char* buffer, size_t capacity) {
    constexpr const char* SUFFIX = ".rpl";
    const std::unique_ptr<DIR, directory_closer> directory(opendir("."));
    if (!directory || capacity == 0) {
        return;
    }
    while (const dirent* entry = readdir(directory.get())) {
        const char* name = entry->d_name;
        const size_t length = std::strlen(name);
        const char* suffix = std::strstr(name, SUFFIX);
        const bool is_replay = suffix != nullptr && std::strlen(suffix) == std::strlen(SUFFIX);
        if (is_replay && std::strncmp(name, buffer, std::strlen(buffer)) == 0) {
            const size_t copied = std::min(length, capacity - 1);
            std::memcpy(buffer, name, copied);
            buffer[copied] = '\0';
            return;
        }
    }
}

int main(int /*argument_count*/, char** /*arguments*/) {
    const std::unique_ptr<settings, settings_deleter> settings(settings_init());
    if (settings_load(settings.get(), SETTINGS_FILE) == 0) {
        std::fprintf(stderr, "Loading settings failed, using defaults\n");
    }
    if (const int result = SDL_Init(SDL_INIT_VIDEO | SDL_INIT_AUDIO); result < 0) {
        std::fprintf(stderr, "Error %d initializing SDL library\n", result);
        return EXIT_NO_SDL;
    }
    // The desktop's size now: later the classic SDL reports the mode that was set.
    const SDL_VideoInfo* desktop = SDL_GetVideoInfo();
    const int32_t native_width = desktop->current_w;
    const int32_t native_height = desktop->current_h;

    player_init(MUSIC_DIRECTORY);  // without an audio device the game is silent
    if (settings->music != 0) {
        player_music_start();
    }
    std::unique_ptr<menu, menu_deleter> menu(menu_init(settings->width, settings->height));

    shell shell = {.settings = settings.get(),
                   .menu = menu.get(),
                   .running = 1,
                   .reinit = 0,
                   .native_width = native_width,
                   .native_height = native_height};
    const int status = run_video_modes(&shell);

    menu.reset();
    player_music_stop();
    player_destroy();  // also when it failed: the mixer's thread may not outlive this function
    if (status != 0) {
        return status;
    }
    SDL_Quit();
    settings_save(settings.get(), SETTINGS_FILE);
    return 0;
}
