// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Sound effects and music with the real SDL_mixer on an audio device that makes no noise. Runs in
// the project's root, for its sounds.

#include "player.h"

#include <SDL.h>
#include <SDL_mixer.h>
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

// SDL_mixer forgets the stream of a file that is no music.
extern "C" const char* __lsan_default_suppressions() { return "leak:SDL_AllocRW"; }  // NOLINT

namespace {

namespace fs = std::filesystem;

// What the player asks for on its way to the libraries; see the functions below.
bool hook_installed = false;
std::set<Mix_Music*> played;
bool types_are_known = true;  // as on most file systems

template <typename function>
function library_function(function /*its type*/, const char* name) {
    return reinterpret_cast<function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {
void Mix_HookMusicFinished(void (*hook)()) {
    hook_installed = hook != nullptr;
    library_function(&Mix_HookMusicFinished, "Mix_HookMusicFinished")(hook);
}
int Mix_PlayMusic(Mix_Music* music, int loops) {
    played.insert(music);
    return library_function(&Mix_PlayMusic, "Mix_PlayMusic")(music, loops);
}
dirent* readdir(DIR* directory) {
    dirent* const entry = library_function(&readdir, "readdir")(directory);
    if (entry != nullptr && !types_are_known) {
        entry->d_type = DT_UNKNOWN;
    }
    return entry;
}
}

namespace {

// A tune of 0.1 s: mono, 8 bits, 8000 Hz.
void write_tune(const fs::path& path) {
    std::ofstream(path, std::ios::binary)
        << std::string(
               "RIFF\x44\x03\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x40\x1f\0\0\x40\x1f\0\0"
               "\x01\0\x08\0data\x20\x03\0\0",
               44)
        << std::string(800, '\x60');
}

void expect_no_player() {
    EXPECT_EQ(player_music_start(), -1);
    EXPECT_EQ(player_scan_music(), -1);
    player_play_sound(SOUND_EXPLODE);
    player_music_finished();
    player_music_stop();
    player_destroy();
}

class Player : public testing::Test {
protected:
    void SetUp() override { setenv("SDL_AUDIODRIVER", "dummy", 1); }
    void TearDown() override {
        player_destroy();
        SDL_Quit();
    }
};

TEST_F(Player, PlaysWhatIsMusicForEver) {
    const fs::path folder = fs::temp_directory_path() / ("quorvane-" + std::to_string(getpid()));
    fs::create_directories(folder / "album");
    std::ofstream(folder / "notes.txt") << "not a tune";
    write_tune(folder / "album/deep.wav");
    fs::create_symlink("album/deep.wav", folder / "link.wav");

    expect_no_player();
    ASSERT_EQ(player_init(folder.c_str()), 0);
    EXPECT_EQ(player_init(folder.c_str()), -1);
    EXPECT_EQ(player_music_start(), -2) << "something was taken for a tune";
    write_tune(folder / "tune.wav");
    EXPECT_EQ(player_scan_music(), 0);
    EXPECT_EQ(player_scan_music(), 0);
    EXPECT_EQ(player_music_start(), 0);
    EXPECT_EQ(player_music_start(), -3);
    int playing = 0;  // looks; the tune is over many times in this second
    for (int i = 0; i < 50; ++i) {
        SDL_Delay(20);
        playing += Mix_PlayingMusic();
    }
    EXPECT_GT(playing, 25);
    player_music_stop();
    SDL_Delay(400);
    EXPECT_EQ(Mix_PlayingMusic(), 0);
    EXPECT_FALSE(hook_installed) << "the mixer's thread may look at tracks that are freed";
    types_are_known = false;
    EXPECT_EQ(player_scan_music(), 0);
    EXPECT_EQ(player_music_start(), 0);
    EXPECT_TRUE(hook_installed);
    player_music_stop();
    played.clear();
    for (int i = 0; i < 64; ++i) {  // one tune only, by chance: once in 2^63 runs
        player_music_finished();
    }
    EXPECT_EQ(played.size(), 2U) << "the tune and, where no types are known, the link";
    types_are_known = true;
    player_destroy();
    expect_no_player();

    fs::remove_all(folder);
    ASSERT_EQ(player_init(folder.c_str()), 0);
    EXPECT_EQ(player_scan_music(), -2);
    EXPECT_EQ(player_music_start(), -2);
}

TEST_F(Player, PlaysEveryEffectOnAFreeChannel) {
    ASSERT_EQ(player_init("music"), 0);
    for (uint32_t id = 0; id <= SOUND_COUNT; ++id) {
        player_play_sound(id);
        EXPECT_EQ(Mix_Playing(-1), id < SOUND_COUNT ? 1 : 0) << "sound " << id;
        Mix_HaltChannel(-1);
    }
}

}  // namespace
