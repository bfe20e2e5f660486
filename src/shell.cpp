// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "shell.h"

#include <GL/gl.h>
#include <SDL.h>
#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "assets.h"
#include "font.h"
#include "input.h"
#include "menu.h"
#include "menu_tree.h"
#include "player.h"
#include "session.h"
#include "settings.h"
#include "video.h"

namespace {

constexpr uint32_t MENU_FRAME_MS = 10;
// Of the name and file name entries, terminator included: one less than the settings can hold.
constexpr uint32_t TEXT_CAPACITY = SETTINGS_TEXT_MAX;

// Process exit statuses of a failed start; as the shell sees them 255, 254 and 253.
constexpr int EXIT_NO_SDL = -1;
constexpr int EXIT_NO_VIDEO_MODE = -2;
constexpr int EXIT_NO_TEXTURES = -3;

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
struct directory_closer {
    void operator()(DIR* directory) const { closedir(directory); }
};
using input_pointer = std::unique_ptr<input, input_deleter>;

bool is_control(char byte) { return (byte >= 0 && byte < ' ') || byte == 0x7f; }

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

// --- The menu and the video modes ------------------------------------------------------------

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
        const bool is_replay = suffix != nullptr && std::strlen(suffix) == std::strlen(SUFFIX) &&
                               std::none_of(name, name + length, is_control);
        if (is_replay && std::strncmp(name, buffer, std::strlen(buffer)) == 0) {
            const size_t copied = std::min(length, capacity - 1);
            std::memcpy(buffer, name, copied);
            buffer[copied] = '\0';
            return;
        }
    }
}

int shell_run() {
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
