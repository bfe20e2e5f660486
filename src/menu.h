// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The main menu's tree and its navigation, and the other full-screen interactions: text entry, the
// upload prompt and message screens. All of them take SDL events from the queue until the first
// that decides something and answer with a menu_result; later events stay queued. All draw in
// pixels with the origin at the top left.

#pragma once

#include <cstdint>

enum menu_result : int32_t {
    MENU_NONE = 0,     // nothing decided in this frame
    MENU_QUIT = 1,     // the window was closed; in the menu also Escape in the top list
    MENU_RESIZE = 2,   // the window was resized
    MENU_CANCEL = 3,   // Escape was released
    MENU_CONFIRM = 4,  // Return was released; in the menu: a leaf was chosen
    MENU_COMPLETE = 5  // TAB was pressed, text entry only
};

struct menu_item {
    int32_t id;               // selection id of a leaf; 0 for a submenu
    char title[32];           // also the heading of its list
    int32_t selected;         // submenu: highlighted entry while open, -1 while closed
    struct menu_item* items;  // owned; null for a leaf
    int32_t item_count;
};

struct menu : menu_item {
    int32_t width;  // screen pixels
    int32_t height;
};

menu* menu_init(int32_t width, int32_t height);               // free it with menu_destroy
void menu_reinit(menu* menu, int32_t width, int32_t height);  // after a video mode change
void menu_destroy(menu* menu);

// The submenu whose list is shown.
menu_item* menu_get_active_item(menu* menu);

// Applies queued events to the tree. On MENU_CONFIRM *selection_id holds the leaf's id, else 0.
int32_t menu_poll_navigation(menu* menu, int32_t* selection_id);

void menu_draw(menu* menu);
void menu_draw_items(const menu* menu, const menu_item* item);

// A projection in pixels with y down, and its end. Both leave the model-view matrix selected.
void menu_ortho_begin(const menu* menu);
void menu_ortho_end();

// Applies queued events to the text in `buffer` (capacity `size` bytes); *length is the edit
// position. Which keys are held is process-wide and survives the call.
int32_t menu_text_poll(menu* menu, char* buffer, uint32_t size, int32_t* length);

// Shows the text entry until it is decided: a result other than MENU_NONE. With `length` 0 the
// first character typed replaces the text in the buffer.
int32_t menu_text_entry(menu* menu, const char* prompt, char* buffer, uint32_t size,
                        int32_t length);

// One frame each, over what the caller has drawn; the caller swaps buffers.
int32_t menu_upload_prompt(menu* menu);
int32_t menu_message_screen(menu* menu, const char* text);
