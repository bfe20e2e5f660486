// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The shell with scripted events and a clock that only delays move: selections, whole game sessions
// with their end screens, and a run of the program.

#include "shell.h"

#include <fstream>

#include "game.h"
#include "input.h"
#include "interrupt.h"
#include "menu.h"
#include "recorder.h"
#include "replay.h"
#include "session.h"
#include "settings.h"

namespace {

namespace fs = std::filesystem;

// clang-format off
std::string read_file(const char* path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

constexpr const char* PLAYED_BACK = "initialized replay correctly\n||10";
constexpr int START = 1, LOAD = 2;  // selections

class Shell : public testing::Test {
protected:
    // One selection with events by swap: "standard output|standard error|running reinit".
    std::string choose(int id, const std::map<int, std::string>& script, int upload_result = 0) {
        start_recording();
        rec.script = script;
        rec.upload_result = upload_result;
        state.running = 1;
        state.reinit = 0;
        const std::string printed = printed_by([&] { dispatch_selection(&state, id); });
        return printed + "|" + std::to_string(state.running) + std::to_string(state.reinit);
    }

    const scratch_folder folder;
    const owner<settings> choices{settings_init(), settings_destroy};
    const owner<menu> tree{menu_init(800, 600), menu_destroy};
    shell state{choices.get(), tree.get(), 1, 0, 1920, 1080};
};

TEST_F(Shell, SelectionsChangeTheirSettings) {
    const std::array<int, 4> modes[] = {{4, 800, 600, 0},   {5, 1024, 768, 0}, {6, 1280, 720, 0},
                                        {7, 1920, 1080, 1}, {8, 800, 600, 1},  {9, 1024, 768, 1}};
    for (const auto& [id, width, height, fullscreen] : modes) {
        EXPECT_EQ(choose(id, {}), "||11");
        EXPECT_EQ((std::array{choices->width, choices->height, choices->fullscreen}),
                  (std::array{width, height, fullscreen}));
    }
    for (const auto& [id, music] : {std::pair{11, 0}, {10, 1}}) {
        EXPECT_EQ(choose(id, {}), "||10");
        EXPECT_EQ(rec.trace, strings{music == 0 ? "music off" : "music on"});
        EXPECT_EQ(choices->music, music);
    }
    EXPECT_EQ(choose(0, {}), "|Unconfigured selection\n|10");
    EXPECT_EQ(choose(-1, {}), "|Unknown selection!\n|10");
    EXPECT_EQ(choose(12, {}), "|Unknown selection!\n|10");
    EXPECT_EQ(choose(3, {}), "||00");
    for (const int id : {START, LOAD}) {
        EXPECT_EQ(choose(id, {{1, "Escape"}}), "||10");
        EXPECT_EQ(choose(id, {{1, "close"}}), "||00");
        EXPECT_EQ(choose(id, {{1, "resize"}}), "||11");
    }
    EXPECT_TRUE(fs::is_empty(".")) << "saved although nothing was confirmed";
}

// A whole game by the real rules: straight up into the hole; then its playback.
TEST_F(Shell, GameEndsInTheHoleAndPlaysBack) {
    EXPECT_EQ(choose(START, {{1, "+k +Tab"}, {2, "Return +Up +Escape mouse"}, {60, "resize"}}),
              "||11");
    EXPECT_EQ(rec.frames.at(0).at(3), "'Player name: ' at 20,140 22.4");
    EXPECT_EQ(rec.error, 0U) << "the next textures would be refused";
    EXPECT_EQ(rec.error_reads * 100 + count_trace("sound 5") * 10 + count_trace("sound 6"), 111);
    EXPECT_NE(read_file(SETTINGS_FILE).find("name=k\n"), std::string::npos);
    EXPECT_EQ(read_file(REPLAY_FILE).substr(31, 32), std::string(31, ' ') + "k");
    const owner<replay> log{replay_init(), replay_destroy};
    ASSERT_EQ(input_read_file(log.get(), REPLAY_FILE), 0);
    ASSERT_EQ(log->loaded_count, 2 + 22) << "2 units at 2.5 a second: lost in the 22nd frame";
    for (int i = 1; i < log->loaded_count; i++) {
        EXPECT_EQ(log->events[i].type, i == 1 ? REPLAY_EVENT_KEY_DOWN : REPLAY_EVENT_TICK);
        EXPECT_EQ(log->events[i].value, i <= 2 ? 0U : 20U) << "event " << i;
    }
    fs::rename(REPLAY_FILE, "kept.rpl");
    EXPECT_EQ(choose(LOAD, {{1, "Return"}}), "Error -1 initializing replay file\n||10");
    EXPECT_EQ(count_trace("clear black"), 0) << "a rejected file starts no game";
    EXPECT_EQ(choose(LOAD, {{1, "+k +Tab"}, {2, "Return"}, {9, "Return resize"}, {30, "Return"}}),
              PLAYED_BACK);
    EXPECT_EQ(rec.frames.at(1).at(3), "'Replay file (TAB to complete):' at 20,140 22.4");
    EXPECT_EQ(rec.frames.at(1).at(4), "'kept.rpl' at 20,180 16");
    EXPECT_EQ(rec.error_reads * 100 + count_trace("sound 5") * 10 + count_trace("sound 6"), 111);
    EXPECT_FALSE(fs::exists(REPLAY_FILE)) << "a playback writes nothing";
    EXPECT_EQ(strings(rec.frames.at(29).end() - 3, rec.frames[29].end()),
              (strings{"'        Replay finished!' at 36,200 24",
                       "'     Please press enter to' at 36,250 24",
                       "'           continue...' at 36,300 24"}));
}

TEST_F(Shell, EndScreensDecideAboutUploadAndWhatFollows) {
    const std::string posted = "Posting data to the server succeeded!\n||",
                      failed = "Posting data failed: Couldn't connect to server\n||";
    const struct {
        const char *in_play, *at_prompt, *at_reply;
        int upload_result, swaps;
        std::string outcome;
    } cases[] = {{"Escape", "Return", "Escape", 0, 8, posted + "10"},
                 {"close", "Return", "Return", 0, 8, posted + "10"},
                 {"Escape", "Return", "close", 0, 8, posted + "00"},
                 {"close", "Return", "resize", 0, 8, posted + "11"},
                 {"close", "Return", "", 7, 6, failed + "10"},
                 {"close", "Escape", "", 0, 6, "||10"},
                 {"Escape", "close", "", 0, 6, "||00"},
                 {"Escape", "resize", "", 0, 6, "||11"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.outcome);
        std::ofstream(REPLAY_FILE) << std::string(5000, 'x');
        EXPECT_EQ(choose(START, {{1, "Return"}, {3, "resize"}, {4, c.in_play}, {6, c.at_prompt},
                                 {8, c.at_reply}}, c.upload_result), c.outcome);
        // The frame that takes the end of play is swapped, one on which a screen is left is not.
        EXPECT_EQ(rec.frames.size(), static_cast<size_t>(c.swaps));
        EXPECT_EQ(count_trace("clear black"), c.swaps == 8 ? 9 : 6);
        EXPECT_EQ(rec.error_reads, 1);
        const std::string saved = read_file(REPLAY_FILE);
        EXPECT_EQ(saved.substr(0, 6), "QRVNPL");
        EXPECT_LT(saved.size(), 100U) << "overwritten whole";
        EXPECT_EQ(rec.uploaded, c.at_prompt == std::string("Return") ? saved : "");
    }
    fs::remove(REPLAY_FILE);
    fs::create_directory(REPLAY_FILE);
    EXPECT_EQ(choose(START, {{1, "Return"}, {2, "close"}, {4, "Return"}, {6, "Return"}}),
              "Error opening file \"replay.rpl\" for saving\n" + posted + "10");
    EXPECT_EQ(rec.uploaded.substr(0, 6), "QRVNPL");
}

TEST_F(Shell, PlaybackTakesOnlyEscapeAndCloseAndEndsWithItsLog) {
    const owner<replay> log{replay_init(), replay_destroy};
    const auto play = [&](const std::map<int, std::string>& script) {
        uint8_t* data = nullptr;
        size_t length = 0;
        replay_get_data(log.get(), &data, &length);
        std::ofstream(REPLAY_FILE, std::ios::binary).write(reinterpret_cast<char*>(data),
                                                           static_cast<std::streamsize>(length));
        std::free(data);
        EXPECT_EQ(choose(LOAD, script), PLAYED_BACK);
    };
    replay_add_event(log.get(), REPLAY_EVENT_SEED, 1);
    play({{1, "Return"}, {3, "Return"}});
    EXPECT_EQ(rec.frames.at(1).back(), "'           continue...' at 36,300 24")
        << "no frame without a tick, the message all the same";
    for (int i = 0; i < 50; i++) {
        replay_add_event(log.get(), REPLAY_EVENT_TICK, 0);
    }
    for (const char* end : {"Escape", "close"}) {
        play({{1, "Return +Up"}, {5, "Return"}, {9, end}, {12, "Escape"}});
        EXPECT_EQ(rec.frames.size(), 12U);
        EXPECT_EQ(count_trace("sound 5"), 8) << "once for every frame at time 0";
    }
}

TEST_F(Shell, EventsOfAFrameAreAllTaken) {
    start_recording();
    const owner<input> keys{input_init(nullptr), input_destroy};
    game world{};
    push("Escape resize +Ctrl Ctrl +w +p");
    poll_game_events(&world, keys.get());
    EXPECT_EQ(rec.events.size(), 0U);
    EXPECT_EQ(world.over * 10 + keys->key_state.keys[KEY_FORWARD], 11);
    EXPECT_EQ(keys->replay->event_count, 4) << "seed, press and release of Control, press of w";
    interrupt_set(false);
    push("+Escape x mouse");
    EXPECT_FALSE(interrupt_pending()) << "and they are gone: a full queue would keep Escape out";
    push("mouse Escape x");
    EXPECT_TRUE(interrupt_pending() && interrupt_pending());
}

TEST_F(Shell, CompletesTheFirstFittingName) {
    const std::string long_name = "long" + std::string(56, 'z');
    const std::tuple<strings, std::string, std::string> cases[] = {
        {{"abc.rpl", "x"}, "ab", "abc.rpl"}, {{"abc.rpl"}, "abc.rpl", "abc.rpl"},
        {{"abc.rpl"}, "b", "b"}, {{"abc.rpl"}, "abc.rplx", "abc.rplx"}, {{".rpl"}, "", ".rpl"},
        {{"x.rpl.rpl", "y.rpl.gz", "z.RPL", "wrpl"}, "", ""},
        {{"d\xe9 100%.rpl"}, "d", "d\xe9 100%.rpl"}, {{" ~\x80.rpl"}, "", " ~\x80.rpl"},
        {{"a\x01.rpl", "b\x1f.rpl", "\x7f.rpl"}, "", ""},  // nothing that a terminal obeys
        {{long_name + ".rpl"}, "lo", long_name.substr(0, 49)}};
    for (const auto& [files, typed, completed] : cases) {
        const scratch_folder place;
        for (const std::string& file : files) {
            fs::create_directory(file);  // what kind of entry it is does not matter
        }
        char buffer[51] = {};
        typed.copy(buffer, 50);
        complete_replay_name(buffer, 50);
        EXPECT_EQ(buffer, completed);
    }
}

TEST(Program, RunsFromMenuToSavedSettings) {
    const scratch_folder folder;
    const strings frame{"clear", "delay 10", "swap"};
    for (const bool first : {true, false}) {  // the second run finds what the first one chose
        start_recording(1600, 900);
        rec.script = {{1, "resize"}, {5, "Escape"}};  // a resize does nothing here
        if (first) {
            rec.script.insert({{2, "Up Up Return"}, {3, "Up Return"}, {4, "Escape"}});
        }
        EXPECT_EQ(printed_by([] { EXPECT_EQ(shell_run(), 0); }),
                  first ? "|Loading settings failed, using defaults\n" : "|");
        strings expected{"init", "player music", "mode 800x600x32 gl", "caption Quorvane"};
        for (int i = 0; i < 6; i++) {  // the last decision's frame is drawn
            expected.insert(expected.end(), frame.begin(), frame.end());
        }
        expected.insert(expected.end(), {"music off", "player off", "quit"});
        if (first) {
            expected.insert(expected.begin() + 13, "music off");
            expected.insert(expected.begin() + 2, "music on");
        }
        std::erase_if(rec.trace, [](auto& entry) { return entry.rfind("sound", 0) == 0; });
        EXPECT_EQ(rec.trace, expected);
        EXPECT_EQ(rec.names.size(), 0U) << "textures released";
    }
}
// clang-format on

}  // namespace
