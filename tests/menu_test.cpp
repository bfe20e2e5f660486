// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The menu's navigation and what its entries hand out, text entry, and what all the screens look
// like.

#include "menu.h"

#include "deployment.h"
#include "recorder.h"

namespace {

// clang-format off
class Menu : public testing::Test {
protected:
    void SetUp() override { start_recording(); }

    // What one poll after these events answers and where it leads: "result id list highlight".
    std::string poll(const std::string& events) {
        push(events);
        int32_t id = -7;
        const int result = menu_poll_navigation(root.get(), &id);
        const menu_item* list = menu_get_active_item(root.get());
        return std::to_string(result) + " " + std::to_string(id) + " " + list->title + " " +
               std::to_string(list->selected);
    }
    // One poll of the text entry.
    int type(const std::string& events) {
        push(events);
        return menu_text_poll(root.get(), buffer, 50, &length);
    }
    void begin_text(const char* text, int32_t position = 0) {
        std::strcpy(buffer, text);
        length = position;
    }

    const owner<menu> root{menu_init(800, 600), menu_destroy};
    char buffer[51] = "";
    int32_t length = 0;
};

TEST_F(Menu, NavigatesOnReleasesAndLeavesLaterEvents) {
    const std::pair<const char*, const char*> steps[] = {
        {"", "0 0 Main menu 0"}, {"+Down +Return mouse x", "0 0 Main menu 0"},
        {"Return", "4 1 Main menu 0"}, {"Up Space", "4 3 Main menu 3"},
        {"Down Down Return", "4 2 Main menu 1"}, {"Up", "0 0 Main menu 0"}, {"Down Down", "0 0 Main menu 2"},
        {"Return Down", "0 0 Settings 0"}, {"", "0 0 Settings 1"},  // Down waited for its poll
        {"Return", "4 10 Settings 1"}, {"Down Return", "4 11 Settings 2"},
        {"Down Return", "0 0 Resolution 0"}, {"Return", "4 4 Resolution 0"},
        {"Down Return", "4 5 Resolution 1"}, {"Down Return", "4 6 Resolution 2"},
        {"Down Return", "4 7 Resolution 3"}, {"Down Return", "4 8 Resolution 4"},
        {"Down Return", "4 9 Resolution 5"}, {"Escape Escape", "0 0 Settings 0"},
        {"", "0 0 Main menu 2"}, {"Return", "0 0 Settings 0"},
        {"Return", "0 0 Resolution 0"},  // at its first entry again
        {"Escape", "0 0 Settings 0"}, {"Escape", "0 0 Main menu 2"},
        {"Escape resize close", "1 0 Main menu 2"}, {"", "2 0 Main menu 2"},
        {"", "1 0 Main menu 2"}};
    for (const auto& [events, outcome] : steps) {
        EXPECT_EQ(poll(events), outcome) << events;
    }
    EXPECT_EQ(count_trace("sound 8"), 14);
    EXPECT_EQ(count_trace("sound 9"), 15);
    EXPECT_EQ(count_trace("sound 10"), 5);
    root->selected = 9;
    EXPECT_EQ(poll("Return"), "4 1 Main menu 0");
    EXPECT_DEATH(menu_poll_navigation(root.get(), nullptr), "selection_id");
    EXPECT_DEATH(menu_draw_items(root.get(), nullptr), "item");
    EXPECT_DEATH((root->item_count = 0, poll("")), "item->item_count");
}

TEST_F(Menu, DrawsTheOpenListOverItsBackground) {
    poll("Up Up Return");
    poll("Down");
    std::strcpy(root->items[2].items[2].title, "100%s");  // never a format
    const std::tuple<int, int, strings> sizes[] = {  // the sky is upside down here
        {600, 801, {"bg_space at 300,400 400x400 turned 180 mirrored",
                    "plain 7 4 at 300,400.5 400x400.5 #0,0,0,0.5",
                    "game_splash at 300,87.5 300x37.5", "'Settings' at 105,150 28.8",
                    "'Resolution' at 110,200 24", "'Music ON' at 110,225 24 red",
                    "'100%s' at 110,250 24"}},
        {1281, 720, {"bg_space at 640,360 640x640 turned 180 mirrored",
                     "plain 7 4 at 640,360 400x360 #0,0,0,0.5", "game_splash at 640,87.5 300x37.5",
                     "'Settings' at 445,150 28.8", "'Resolution' at 450,200 24",
                     "'Music ON' at 450,225 24 red", "'100%s' at 450,250 24"}}};
    for (const auto& [width, height, expected] : sizes) {
        start_recording(width, height);
        glDisable(GL_TEXTURE_2D);
        menu_reinit(root.get(), width, height);
        menu_draw(root.get());
        EXPECT_EQ(seen(), expected);
        EXPECT_TRUE(rec.enabled[GL_TEXTURE_2D]) << "a game's first background needs it";
    }
}

TEST_F(Menu, TextIsEditedInPlace) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "old"},
        {"+x", "x"},         // at position 0 the first character replaces the text
        {"+Back Back", ""},  // and the first Backspace empties it
        {"+a +b +Space +Back Back +- +( +9 +) +.", "ab-(9)."},
        {"+Shift +a +z +0 +- RShift +b +RShift +c Shift +d", "AZ0-bCd"},
        {"+a +/ +, +; +' +\\ += +[ +& +A +\x7f +\xe9 +{ +z", "az"},
        {"+Escape +Return mouse a +Up +x", "x"}};
    for (const auto& [events, text] : cases) {
        begin_text("old");
        EXPECT_EQ(type(events), MENU_NONE) << events;
        EXPECT_STREQ(buffer, text) << events;
    }
    for (int i = 0; i < 60; i++) {
        type("+a");
    }
    EXPECT_EQ(buffer, "x" + std::string(48, 'a'));
    begin_text("");
    EXPECT_EQ(type("+a +Tab +b Return +c Escape close resize"), MENU_COMPLETE);
    for (const int result : {MENU_CONFIRM, MENU_CANCEL, MENU_QUIT, MENU_RESIZE, MENU_NONE}) {
        EXPECT_EQ(type(""), result) << "one decision a call";
    }
    EXPECT_STREQ(buffer, "abc");
}

TEST_F(Menu, HeldKeysOutliveTheTextEntry) {
    begin_text("thirty characters of some text", 30);
    type("+Back");
    for (int call = 1; call <= 22; call++) {
        type("");
        EXPECT_EQ(length, call < 20 ? 29 : 29 - (call - 19)) << "after call " << call;
    }
    begin_text("name");
    type("");
    EXPECT_STREQ(buffer, "name") << "repeats only behind a position";
    length = 4;
    type("");
    EXPECT_STREQ(buffer, "nam");
    type("Back +Shift");
    begin_text("");
    type("+a RShift +b");
    EXPECT_STREQ(buffer, "Ab");
}

TEST_F(Menu, TextEntryDrawsAFrameUntilDecided) {
    begin_text("100%s");
    rec.script = {{1, "+z"}, {2, "Return +x"}};
    EXPECT_EQ(menu_text_entry(root.get(), "Name % ", buffer, 50, 0), MENU_CONFIRM);
    EXPECT_EQ(rec.trace, (strings{"clear", "delay 20", "swap", "clear", "delay 20", "swap"}));
    strings expected{"bg_space at 400,300 400x400 turned 180 mirrored",
                     "plain 7 4 at 400,300 400x300 #0,0,0,0.5", "game_splash at 400,87.5 300x37.5",
                     "'Name % ' at 20,140 22.4", "'100%s' at 20,180 16", "'_' at 100,180 24 red",
                     "menu_keyboard at 400,410 400x200"};
    EXPECT_EQ(rec.frames.at(0), expected);
    expected[4] = "'z' at 20,180 16";
    expected[5] = "'_' at 36,180 24 red";
    EXPECT_EQ(rec.frames.at(1), expected);
}

TEST_F(Menu, PromptAndMessageOverlayTheFrameAndAnswer) {
    const std::pair<std::function<int()>, strings> screens[] = {
        {[this] { return menu_upload_prompt(root.get()); },
         {"'     Upload scores?' at 114,150 24", "' [Return] Upload scores' at 114,200 24",
          "'   [Esc] Back to menu' at 114,250 24", "'       Scoreboard' at 114,350 24",
          std::string("'http://") + SCOREBOARD_HOST + "/quorva/' at 98,400 24"}},
        {[this] { return menu_message_screen(root.get(), "\nfirst %d\n\nlast %s"); },
         {"'first %d' at 36,200 24", "'last %s' at 36,300 24"}}};
    for (const auto& [show, expected] : screens) {
        start_recording();
        glColor3f(1, 0, 0);
        glTranslated(5, 5, 0);
        push("+Return +Escape Space mouse");
        EXPECT_EQ(show(), MENU_NONE);
        EXPECT_EQ(seen(), expected);
        EXPECT_EQ(rec.trace, strings{"delay 10"});
        push("Return Escape resize close");
        for (const int result : {MENU_CONFIRM, MENU_CANCEL, MENU_RESIZE, MENU_QUIT, MENU_NONE}) {
            EXPECT_EQ(show(), result);
        }
    }
}
// clang-format on

}  // namespace
