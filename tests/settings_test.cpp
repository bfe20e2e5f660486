// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The settings file: what every kind of line does, and the bytes that are written.

#include "settings.h"

#include <fstream>

#include "recorder.h"

namespace {

// clang-format off
// Loads a file of this text over a record of defaults, and saves that again: "result|bytes".
std::string load(const std::string& text) {
    const scratch_folder folder;
    const owner<settings> record{settings_init(), settings_destroy};
    EXPECT_EQ(settings_load(record.get(), "s.dat"), 0);
    std::ofstream("s.dat", std::ios::binary) << text;
    const int result = settings_load(record.get(), "s.dat");
    EXPECT_EQ(settings_save(record.get(), "missing/s.dat"), 0);
    EXPECT_EQ(settings_save(record.get(), "s.dat"), 1);
    std::ifstream in("s.dat", std::ios::binary);
    return std::to_string(result) + "|" + std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(Settings, ReadNumbersAsTheCLibraryScansThem) {
    const std::tuple<const char*, int, const char*, const char*> lines[] = {
        {"width", 800, "", "\nheight=600\nname=x\nreplay=y\nmouse=0\nfullscreen=0\nmusic=1\n"},
        {"height", 600, "width=800\n", "\nname=x\nreplay=y\nmouse=0\nfullscreen=0\nmusic=1\n"},
        {"mouse", 0, "width=800\nheight=600\nname=x\nreplay=y\n", "\nfullscreen=0\nmusic=1\n"},
        {"music", 1, "width=800\nheight=600\nname=x\nreplay=y\nmouse=0\nfullscreen=0\n", "\n"}};
    for (const auto& [key, fallback, before, after] : lines) {
        for (const char* value : {"=5", "= 7", "=\t-3x", "=+4", "=0x10", "=", "=abc", "=-", "=- 1",
                                  "=007", "=1 2", "= ", "=\r", "=2147483647", " =5", "", "x=5"}) {
            int number = fallback;
            const std::string rest = value + std::string("\n");
            const int scanned = std::sscanf(rest.c_str(), "=%d", &number);  // NOLINT(cert-err34-c)
            const bool needed = *key == 'w' || *key == 'h';
            const std::string text = std::string(before) + key + value + after;
            const std::string result = load(text);
            EXPECT_EQ(result[0], (needed ? scanned == 1 : scanned != 0) ? '1' : '0') << text;
            const std::string line = std::string(key) + "=" + std::to_string(number) + "\n";
            EXPECT_NE(result.find(line), std::string::npos) << text;
        }
    }
}

TEST(Settings, KeepWhatWasReadBeforeABrokenLine) {
    const std::string sizes = "width=1\nheight=-2\n", rest = "mouse=5\nfullscreen=2\nmusic=0\n";
    const std::string old_sizes = "width=800\nheight=600\n", fifty(50, 'n');
    const std::string old_replay = "\nreplay=replay.rpl\nmouse=0\nfullscreen=0\nmusic=1\n";
    const std::string old_texts = "name=Gamer" + old_replay, named = sizes + "name=";
    const std::pair<std::string, std::string> cases[] = {
        {"", "0|" + old_sizes + old_texts},
        {"height=2\nwidth=1\n", "0|" + old_sizes + old_texts},
        {" " + sizes, "0|" + old_sizes + old_texts},
        {sizes + "no separator\n", "0|" + sizes + old_texts},
        {sizes + "name =x\nreplay=y\n" + rest, "0|" + sizes + old_texts},
        {sizes + " name=x\nreplay=y\n" + rest, "0|" + sizes + old_texts},
        {named + "A=B c\nreplay=%s\n" + rest + "x\n", "1|" + named + "A=B c\nreplay=%s\n" + rest},
        {named + "x\r\nreplay=\nmouse=\nfullscreen=2\nmusic=9",
         "1|" + named + "x\r\nreplay=\nmouse=0\nfullscreen=2\nmusic=9\n"},
        {named + fifty + "1\nreplay=y\n" + rest, "1|" + named + fifty + "\nreplay=y\n" + rest},
        {named + "x\nreplay=replay.rpl\nmou", "0|" + named + "x" + old_replay},
        {named + "x\nreplay=y\nmouse=5\nmusic=0\n",
         "0|" + named + "x\nreplay=y\nmouse=5\nfullscreen=0\nmusic=1\n"},
        // A line too long for the buffer goes on as the next line, which has no key.
        {named + fifty + std::string(1500, ' ') + "\nreplay=y\n" + rest,
         "0|" + named + fifty + old_replay}};
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(load(text), expected);
    }
}
// clang-format on

}  // namespace
