// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "menu.h"

#include <GL/gl.h>
#include <SDL.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "assertion.h"
#include "deployment.h"
#include "font.h"
#include "gl_guard.h"
#include "gui.h"
#include "menu_tree.h"
#include "player.h"

namespace {

constexpr int32_t CLOSED = -1;

// Keys held in the text entry. They outlive a screen: one that is still down when the next text
// entry opens keeps its effect.
int32_t backspace_repeat = 0;  // 0 while Backspace is up, else calls since its press
int32_t shift_held = 0;

constexpr int32_t BACKSPACE_REPEAT_DELAY = 20;  // calls before a held Backspace repeats

constexpr int32_t ROW_HEIGHT = 50;  // of prompts and message screens
constexpr float PROMPT_SCALE = 0.75F;

constexpr uint32_t TEXT_ENTRY_FRAME_MS = 20;
constexpr uint32_t PROMPT_FRAME_MS = 10;

bool is_open_submenu(const menu_item* item) {
    return item->items != nullptr && item->selected != CLOSED;
}

void destroy_items(menu_item* item) {
    for (int32_t i = 0; i < item->item_count; ++i) {
        destroy_items(&item->items[i]);
    }
    std::free(item->items);
}

bool is_text_key(SDLKey key) {
    return (key >= SDLK_a && key <= SDLK_z) || (key >= SDLK_0 && key <= SDLK_9) ||
           key == SDLK_SPACE || key == SDLK_MINUS || key == SDLK_LEFTPAREN ||
           key == SDLK_RIGHTPAREN || key == SDLK_PERIOD;
}

void delete_last_character(char* buffer, int32_t* length) {
    *length -= 1;
    buffer[*length] = '\0';
}

void type_character(SDLKey key, char* buffer, uint32_t size, int32_t* length) {
    if (*length >= static_cast<int64_t>(size) - 1) {
        return;
    }
    const int character = shift_held != 0 ? std::toupper(key) : static_cast<int>(key);
    buffer[*length] = static_cast<char>(character);
    buffer[*length + 1] = '\0';
    *length += 1;
}

int32_t handle_text_key_down(SDLKey key, char* buffer, uint32_t size, int32_t* length) {
    if (is_text_key(key)) {
        type_character(key, buffer, size, length);
        return MENU_NONE;
    }
    switch (key) {
        case SDLK_BACKSPACE:
            if (*length > 0) {
                delete_last_character(buffer, length);
            } else {
                buffer[0] = '\0';
            }
            backspace_repeat = 1;
            return MENU_NONE;
        case SDLK_LSHIFT:
        case SDLK_RSHIFT:
            shift_held = 1;
            return MENU_NONE;
        case SDLK_TAB:
            return MENU_COMPLETE;
        default:
            return MENU_NONE;
    }
}

int32_t handle_text_key_up(SDLKey key) {
    switch (key) {
        case SDLK_LSHIFT:
        case SDLK_RSHIFT:
            shift_held = 0;
            return MENU_NONE;
        case SDLK_BACKSPACE:
            backspace_repeat = 0;
            return MENU_NONE;
        case SDLK_RETURN:
            return MENU_CONFIRM;
        case SDLK_ESCAPE:
            return MENU_CANCEL;
        default:
            return MENU_NONE;
    }
}

// What every screen makes of the window's own events.
int32_t window_result(const SDL_Event& event) {
    switch (event.type) {
        case SDL_QUIT:
            return MENU_QUIT;
        case SDL_VIDEORESIZE:
            return MENU_RESIZE;
        default:
            return MENU_NONE;
    }
}

// Events of the screens that only wait for an answer.
int32_t poll_answer() {
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        if (const int32_t result = window_result(event); result != MENU_NONE) {
            return result;
        }
        if (event.type == SDL_KEYUP && event.key.keysym.sym == SDLK_RETURN) {
            return MENU_CONFIRM;
        }
        if (event.type == SDL_KEYUP && event.key.keysym.sym == SDLK_ESCAPE) {
            return MENU_CANCEL;
        }
    }
    return MENU_NONE;
}

void draw_text_entry(const menu* menu, const char* prompt, const char* text) {
    menu_ortho_begin(menu);
    menu_draw_background(menu);
    menu_draw_splash(menu);
    {
        constexpr float CHARACTER_WIDTH = 16.0F;  // at the text's scale
        const matrix_guard matrix;
        glTranslated(menu->width / 2 - 380, 140.0, 0.0);
        glColor3f(1.0F, 1.0F, 1.0F);
        font_print(0.0F, 0.0F, 0.7F, "%s", prompt);
        font_print(0.0F, 40.0F, 0.5F, "%s", text);
        glColor3f(1.0F, 0.0F, 0.0F);
        font_print(CHARACTER_WIDTH * static_cast<float>(std::strlen(text)), 40.0F, 0.75F, "_");
    }
    {
        const matrix_guard matrix;
        glTranslated(menu->width / 2 - 400, 210.0, 0.0);
        menu_draw_keyboard(menu, 800);
    }
    menu_ortho_end();
}

// Rows below the window are left out: the scoreboard's answer can have any number of them.
void draw_message(const char* text, int32_t rows) {
    for (int32_t row = 0; row < rows; ++row) {
        const auto y = static_cast<float>(row * ROW_HEIGHT);
        const char* newline = std::strchr(text, '\n');
        if (newline == nullptr) {
            font_print(0.0F, y, PROMPT_SCALE, "%s", text);
            return;
        }
        // What does not fit a text buffer is cut anyway; the limit keeps long lines cheap.
        const auto length = static_cast<int32_t>(std::min<std::ptrdiff_t>(newline - text, 255));
        font_print_n(0.0F, y, PROMPT_SCALE, "%.*s", length, length, text);
        text = newline + 1;
    }
}

}  // namespace

menu* menu_init(int32_t width, int32_t height) {
    auto* menu = static_cast<struct menu*>(std::calloc(1, sizeof(struct menu)));
    assert(menu);
    std::strcpy(menu->title, "Main menu");
    menu->width = width;
    menu->height = height;
    menu_build_main(menu);
    return menu;
}

void menu_reinit(menu* menu, int32_t width, int32_t height) {
    assert(menu);
    menu->width = width;
    menu->height = height;
}

void menu_destroy(menu* menu) {
    assert(menu);
    destroy_items(menu);
    std::free(menu);
}

menu_item* menu_get_active_item(menu* menu) {
    assert(menu);
    menu_item* item = menu;
    while (is_open_submenu(item) && item->selected >= 0 && item->selected < item->item_count &&
           is_open_submenu(&item->items[item->selected])) {
        item = &item->items[item->selected];
    }
    return item;
}

int32_t menu_poll_navigation(menu* menu, int32_t* selection_id) {
    assert(menu);
    assert(selection_id);
    menu_item* item = menu_get_active_item(menu);
    assert(item);
    assert(item->item_count);
    if (item->selected < 0 || item->selected >= item->item_count) {
        item->selected = 0;
    }
    *selection_id = 0;

    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        if (const int32_t result = window_result(event); result != MENU_NONE) {
            return result;
        }
        if (event.type != SDL_KEYUP) {
            continue;
        }
        switch (event.key.keysym.sym) {
            case SDLK_UP:
                player_play_sound(SOUND_MENU_MOVE);
                item->selected -= 1;
                if (item->selected < 0) {
                    item->selected += item->item_count;
                }
                break;
            case SDLK_DOWN:
                player_play_sound(SOUND_MENU_MOVE);
                item->selected = (item->selected + 1) % item->item_count;
                break;
            case SDLK_RETURN:
            case SDLK_SPACE: {
                player_play_sound(SOUND_MENU_SELECT);
                menu_item* entry = &item->items[item->selected];
                if (entry->items == nullptr) {
                    *selection_id = entry->id;
                    return MENU_CONFIRM;
                }
                entry->selected = 0;
                return MENU_NONE;
            }
            case SDLK_ESCAPE:
                player_play_sound(SOUND_MENU_BACK);
                if (item == menu) {
                    return MENU_QUIT;
                }
                item->selected = CLOSED;
                return MENU_NONE;
            default:
                break;
        }
    }
    return MENU_NONE;
}

void menu_draw(menu* menu) {
    assert(menu);
    const menu_item* item = menu_get_active_item(menu);
    assert(item);
    menu_ortho_begin(menu);
    menu_draw_background(menu);
    menu_draw_splash(menu);
    menu_draw_items(menu, item);
    menu_ortho_end();
}

void menu_draw_items(const menu* menu, const menu_item* item) {
    assert(menu);
    assert(item);
    const matrix_guard matrix;
    glTranslated(menu->width / 2 - 200, 150.0, 0.0);
    font_print(5.0F, 0.0F, 0.9F, "%s", item->title);
    for (int32_t i = 0; i < item->item_count; ++i) {
        if (i == item->selected) {
            glColor3f(1.0F, 0.0F, 0.0F);
        } else {
            glColor3f(1.0F, 1.0F, 1.0F);
        }
        font_print(10.0F, static_cast<float>(50 + 25 * i), 0.75F, "%s", item->items[i].title);
    }
}

void menu_ortho_begin(const menu* menu) {
    assert(menu);
    gui_ortho_begin(menu->width, menu->height);
}

void menu_ortho_end() { gui_ortho_end(); }

int32_t menu_text_poll(menu* menu, char* buffer, uint32_t size, int32_t* length) {
    assert(menu);
    assert(buffer);
    assert(length);
    if (backspace_repeat != 0) {
        // The count stops where it has its effect: a key whose release got lost repeats for ever.
        backspace_repeat = std::min(backspace_repeat + 1, BACKSPACE_REPEAT_DELAY + 1);
        if (backspace_repeat > BACKSPACE_REPEAT_DELAY && *length > 0) {
            delete_last_character(buffer, length);
        }
    }
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        int32_t result = window_result(event);
        if (event.type == SDL_KEYDOWN) {
            result = handle_text_key_down(event.key.keysym.sym, buffer, size, length);
        } else if (event.type == SDL_KEYUP) {
            result = handle_text_key_up(event.key.keysym.sym);
        }
        if (result != MENU_NONE) {
            return result;
        }
    }
    return MENU_NONE;
}

int32_t menu_text_entry(menu* menu, const char* prompt, char* buffer, uint32_t size,
                        int32_t length) {
    assert(menu);
    assert(prompt);
    assert(buffer);
    while (true) {
        const int32_t result = menu_text_poll(menu, buffer, size, &length);
        if (result != MENU_NONE) {
            return result;
        }
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glLoadIdentity();
        draw_text_entry(menu, prompt, buffer);
        SDL_Delay(TEXT_ENTRY_FRAME_MS);
        SDL_GL_SwapBuffers();
    }
}

int32_t menu_upload_prompt(menu* menu) {
    assert(menu);
    glLoadIdentity();
    menu_ortho_begin(menu);
    {
        const matrix_guard matrix;
        glTranslated(menu->width / 2 - 286, menu->height / 2 - 150, 0.0);
        glColor3f(1.0F, 1.0F, 1.0F);
        font_print(0.0F, 0.0F, PROMPT_SCALE, "     Upload scores?");
        font_print(0.0F, 50.0F, PROMPT_SCALE, " [Return] Upload scores");
        font_print(0.0F, 100.0F, PROMPT_SCALE, "   [Esc] Back to menu");
        font_print(0.0F, 200.0F, PROMPT_SCALE, "       Scoreboard");
        font_print(-16.0F, 250.0F, PROMPT_SCALE, "http://%s/quorva/", SCOREBOARD_HOST);
    }
    menu_ortho_end();
    SDL_Delay(PROMPT_FRAME_MS);
    return poll_answer();
}

int32_t menu_message_screen(menu* menu, const char* text) {
    assert(menu);
    assert(text);
    glLoadIdentity();
    menu_ortho_begin(menu);
    {
        const int32_t top = menu->height / 2 - 150;
        const int32_t rows_above = top < 0 ? -top / ROW_HEIGHT : 0;
        const matrix_guard matrix;
        glTranslated(menu->width / 2 - 364, top, 0.0);
        glColor3f(1.0F, 1.0F, 1.0F);
        draw_message(text, rows_above + menu->height / ROW_HEIGHT + 1);
    }
    menu_ortho_end();
    SDL_Delay(PROMPT_FRAME_MS);
    return poll_answer();
}
