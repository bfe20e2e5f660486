// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "player.h"

#include <SDL.h>
#include <SDL_mixer.h>
#include <dirent.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <memory>
#include <new>

#include "assertion.h"

namespace {

constexpr const char* SOUND_FILES[] = {
    "sounds/shoot_player.ogg",  "sounds/shoot_enemy.ogg", "sounds/explode.ogg",
    "sounds/shield_change.ogg", "sounds/shield_hit.ogg",  "sounds/game_start.ogg",
    "sounds/game_over.ogg",     "sounds/chain.ogg",       "sounds/menu_move.ogg",
    "sounds/menu_select.ogg",   "sounds/menu_back.ogg",
};
static_assert(std::size(SOUND_FILES) == SOUND_COUNT);

constexpr int SAMPLE_RATE = 44100;
constexpr int STEREO = 2;
constexpr int CHUNK_SAMPLES = 4096;
constexpr int MIXING_CHANNELS = 32;

struct audio_player {
    const char* music_dir;  // borrowed
    int32_t track_count;
    char** track_names;  // owned, track_count texts and a null
    Mix_Music** tracks;  // owned, in the order of the names
    // The only field that the mixer's thread writes. It reads the tracks, which stay as they are
    // while the music-finished hook is installed.
    std::atomic<int32_t> current_track;
    int32_t music_playing;
    Mix_Chunk* sounds[SOUND_COUNT];  // null where loading failed
};

audio_player* player = nullptr;

struct directory_closer {
    void operator()(DIR* directory) const { closedir(directory); }
};

void free_tracks() {
    for (int32_t i = 0; i < player->track_count; ++i) {
        std::free(player->track_names[i]);
        if (player->tracks[i] != nullptr) {
            Mix_FreeMusic(player->tracks[i]);
        }
    }
    std::free(player->track_names);
    std::free(player->tracks);
    player->track_names = nullptr;
    player->tracks = nullptr;
    player->track_count = 0;
}

template <typename element>
element* resize(element* array, int32_t count) {
    auto* resized =
        static_cast<element*>(std::realloc(array, static_cast<size_t>(count) * sizeof(element)));
    assert(resized);
    return resized;
}

void add_track(const char* path, Mix_Music* music) {
    const int32_t index = player->track_count;
    player->track_names = resize(player->track_names, index + 1);
    player->tracks = resize(player->tracks, index + 1);
    player->track_names[index] = strdup(path);
    assert(player->track_names[index]);
    player->tracks[index] = music;
    player->track_count = index + 1;
}

void draw_track() { player->current_track = std::rand() % player->track_count; }

int play_track() {
    constexpr int ONCE = 1;
    return Mix_PlayMusic(player->tracks[player->current_track], ONCE);
}

}  // namespace

int32_t player_init(const char* music_dir) {
    if (player != nullptr) {
        return -1;
    }
    if (Mix_OpenAudio(SAMPLE_RATE, AUDIO_S16LSB, STEREO, CHUNK_SAMPLES) != 0) {
        std::printf("Mix_OpenAudio: %s\n", SDL_GetError());
        return -2;
    }
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    player = new (std::nothrow) audio_player{};
    assert(player);
    player->music_dir = music_dir;
    player_scan_music();
    player_load_sounds();
    Mix_AllocateChannels(MIXING_CHANNELS);
    return 0;
}

void player_destroy() {
    if (player == nullptr) {
        return;
    }
    Mix_HookMusicFinished(nullptr);
    Mix_HaltMusic();
    Mix_HaltChannel(-1);
    for (Mix_Chunk* sound : player->sounds) {
        if (sound != nullptr) {
            Mix_FreeChunk(sound);
        }
    }
    free_tracks();
    delete player;
    Mix_CloseAudio();
    player = nullptr;
}

void player_play_sound(uint32_t id) {
    if (player != nullptr && id < SOUND_COUNT) {
        Mix_PlayChannelTimed(-1, player->sounds[id], 0, -1);  // a null sound plays nothing
    }
}

int32_t player_music_start() {
    if (player == nullptr) {
        return -1;
    }
    if (player->track_count <= player->current_track) {
        return -2;
    }
    if (player->music_playing != 0) {
        return -3;
    }
    draw_track();  // before the hook is there: from then on the mixer's thread draws
    Mix_HookMusicFinished(player_music_finished);
    if (play_track() != 0) {
        return -4;
    }
    player->music_playing = 1;
    return 0;
}

void player_music_stop() {
    if (player != nullptr) {
        Mix_HookMusicFinished(nullptr);
        Mix_HaltMusic();
        player->music_playing = 0;
    }
}

int32_t player_scan_music() {
    if (player == nullptr) {
        return -1;
    }
    free_tracks();
    const std::unique_ptr<DIR, directory_closer> directory(opendir(player->music_dir));
    if (!directory) {
        return -2;
    }
    while (const dirent* entry = readdir(directory.get())) {
        if (entry->d_type != DT_REG && entry->d_type != DT_UNKNOWN) {
            continue;
        }
        char path[1024];
        std::snprintf(path, sizeof(path), "%s/%s", player->music_dir, entry->d_name);
        if (Mix_Music* music = Mix_LoadMUS(path)) {
            add_track(path, music);
        }
    }
    player->track_names = resize(player->track_names, player->track_count + 1);
    player->track_names[player->track_count] = nullptr;
    return 0;
}

int32_t player_load_sounds() {
    if (player == nullptr) {
        return 0;
    }
    for (size_t id = 0; id < SOUND_COUNT; ++id) {
        SDL_RWops* stream = SDL_RWFromFile(SOUND_FILES[id], "rb");
        constexpr int CLOSE_STREAM = 1;
        Mix_FreeChunk(player->sounds[id]);  // of an earlier load; null frees nothing
        player->sounds[id] = stream != nullptr ? Mix_LoadWAV_RW(stream, CLOSE_STREAM) : nullptr;
    }
    return 0;
}

void player_music_finished() {
    if (player != nullptr && player->track_count > 0) {
        draw_track();
        play_track();
    }
}
