// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "session.h"

#include <GL/gl.h>
#include <SDL.h>
#include <curl/curl.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "game.h"
#include "input.h"
#include "interrupt.h"
#include "menu.h"
#include "poster.h"

namespace {

constexpr const char* REPLAY_FINISHED_TEXT =
    "\n        Replay finished!\n     Please press enter to\n           continue...";

struct game_deleter {
    void operator()(game* game) const { game_destroy(game); }
};
struct free_deleter {
    void operator()(void* memory) const { std::free(memory); }
};

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

}  // namespace

void play_game(int32_t width, int32_t height, menu* menu, input* input, const char* player_name,
               int32_t* running, int32_t* reinit) {
    input_reset(input);
    interrupt_set(false);
    {
        const std::unique_ptr<game, game_deleter> game(
            game_init(input, GAME_SHIP_COUNT, width, height));
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
