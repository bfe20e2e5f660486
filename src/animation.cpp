// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Frame arithmetic; animation_render is in animation_draw.cpp.

#include "animation.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "assertion.h"

namespace {

struct animation_row {
    texture_id frames[7];
    int32_t frame_count;
    int32_t frame_duration;  // ms
    int32_t loop;
    double scale_x;
    double scale_y;
    double offset_y;
};

// clang-format off
constexpr animation_row ROWS[] = {
    /* SHIP         */ {{TEXTURE_SHIP_1, TEXTURE_SHIP_2, TEXTURE_SHIP_3, TEXTURE_SHIP_4},
                        4, 100, 1, 2.0, 2.0, 0.0},
    /* SHIELD_FLASH */ {{TEXTURE_SHIELD_FLASH_1, TEXTURE_SHIELD_FLASH_2},
                        2, 50, 0, 2.0, 2.0, 0.0},
    /* SHIELD_BLUE  */ {{TEXTURE_SHIELD_BLUE_1, TEXTURE_SHIELD_BLUE_2, TEXTURE_SHIELD_BLUE_3,
                         TEXTURE_SHIELD_BLUE_4, TEXTURE_SHIELD_BLUE_5, TEXTURE_SHIELD_BLUE_6},
                        6, 50, 1, 2.0, 2.0, 0.0},
    /* SHIELD_RED   */ {{TEXTURE_SHIELD_RED_1, TEXTURE_SHIELD_RED_2, TEXTURE_SHIELD_RED_3,
                         TEXTURE_SHIELD_RED_4, TEXTURE_SHIELD_RED_5, TEXTURE_SHIELD_RED_6},
                        6, 100, 1, 2.0, 2.0, 0.0},
    /* SHOT_BLUE    */ {{TEXTURE_PLAYER_SHOT_BLUE_1, TEXTURE_PLAYER_SHOT_BLUE_2,
                         TEXTURE_PLAYER_SHOT_BLUE_1, TEXTURE_PLAYER_SHOT_BLUE_3},
                        4, 100, 1, 1.0, 1.0, 0.0},
    /* SHOT_RED     */ {{TEXTURE_PLAYER_SHOT_RED_1, TEXTURE_PLAYER_SHOT_RED_2,
                         TEXTURE_PLAYER_SHOT_RED_1, TEXTURE_PLAYER_SHOT_RED_3},
                        4, 100, 1, 1.0, 1.0, 0.0},
    /* ENEMY_RED    */ {{TEXTURE_ENEMY_RED_1, TEXTURE_ENEMY_RED_2, TEXTURE_ENEMY_RED_3,
                         TEXTURE_ENEMY_RED_4, TEXTURE_ENEMY_RED_5},
                        5, 200, 1, 1.0, 1.0, 0.0},
    /* ENEMY_BLUE   */ {{TEXTURE_ENEMY_BLUE_1, TEXTURE_ENEMY_BLUE_2, TEXTURE_ENEMY_BLUE_3,
                         TEXTURE_ENEMY_BLUE_4, TEXTURE_ENEMY_BLUE_5},
                        5, 50, 1, 1.0, 1.0, 0.0},
    /* EXPLOSION    */ {{TEXTURE_EXPLOSION_1, TEXTURE_EXPLOSION_1, TEXTURE_EXPLOSION_2,
                         TEXTURE_EXPLOSION_3, TEXTURE_EXPLOSION_4},
                        5, 50, 0, 2.0, 2.0, 0.0},
    /* MUZZLE_FLASH */ {{TEXTURE_MUZZLE_FLASH},
                        1, 50, 0, 1.0, 1.0, 0.5},  // ahead of the nose
    /* CHAIN        */ {{TEXTURE_CHAIN_1, TEXTURE_CHAIN_2, TEXTURE_CHAIN_3, TEXTURE_CHAIN_4,
                         TEXTURE_CHAIN_5, TEXTURE_CHAIN_6, TEXTURE_CHAIN_7},
                        7, 50, 0, 200.0, -50.0, 0.0},  // in pixels, where y points down
};
// clang-format on
static_assert(std::size(ROWS) == ANIMATION_TYPE_COUNT);

// Signed and wide: a recording can carry the game time so close to its end that the difference to
// a start before time zero does not fit 32 bits.
int64_t elapsed_since_start(const animation* anim, int32_t time) {
    return int64_t{time} - anim->start_time;
}

int64_t period(const animation* anim) { return int64_t{anim->frame_count} * anim->frame_duration; }

}  // namespace

animation* animation_init(int32_t type, int32_t start_time) {
    auto* anim = static_cast<animation*>(std::calloc(1, sizeof(animation)));
    assert(anim);
    anim->start_time = start_time;
    if (type < 0 || type >= ANIMATION_TYPE_COUNT) {
        return anim;
    }
    const animation_row& row = ROWS[type];
    anim->scale_x = row.scale_x;
    anim->scale_y = row.scale_y;
    anim->offset_y = row.offset_y;
    anim->loop = row.loop;
    anim->frame_count = row.frame_count;
    anim->frame_duration = row.frame_duration;
    const size_t size = static_cast<size_t>(row.frame_count) * sizeof(texture_id);
    anim->frames = static_cast<texture_id*>(std::malloc(size));
    assert(anim->frames);
    std::memcpy(anim->frames, row.frames, size);
    return anim;
}

void animation_destroy(animation* anim) {
    if (anim != nullptr) {
        std::free(anim->frames);
        std::free(anim);
    }
}

int32_t animation_is_done(const animation* anim, int32_t time) {
    assert(anim);
    if (anim->loop != 0) {
        return 0;
    }
    return elapsed_since_start(anim, time) >= period(anim) ? 1 : 0;
}

int32_t animation_is_looping(const animation* anim) {
    assert(anim);
    return anim->loop;
}

void animation_restart(animation* anim, int32_t time) {
    assert(anim);
    anim->start_time = time;
}

int32_t animation_frame_index(const animation* anim, int32_t time) {
    assert(anim);
    const int64_t elapsed = elapsed_since_start(anim, time);
    if (elapsed < 0) {
        return 0;
    }
    return static_cast<int32_t>((elapsed % period(anim)) / anim->frame_duration);
}
