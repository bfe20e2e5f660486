// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// FNV-1a by G. Fowler, L. C. Noll and K.-P. Vo, over the fields that the header lists.

#include "state_hash.h"

#include <bit>

#include "assertion.h"
#include "enemy.h"
#include "game.h"

namespace {

constexpr uint64_t FNV_PRIME = 0x100000001b3U;

class fnv1a {
public:
    explicit fnv1a(uint64_t start) : hash(start) {}

    void add(int32_t value) { add_bytes(static_cast<uint32_t>(value), 4); }
    void add(double value) { add_bytes(std::bit_cast<uint64_t>(value), 8); }
    void add(vector value) { add_all(value.x, value.y); }

    template <typename... Fields>
    void add_all(Fields... fields) {
        (add(fields), ...);
    }

    uint64_t value() const { return hash; }

private:
    void add_bytes(uint64_t value, int count) {
        for (int i = 0; i < count; ++i) {
            hash = (hash ^ ((value >> (8 * i)) & 0xffU)) * FNV_PRIME;
        }
    }

    uint64_t hash;
};

}  // namespace

uint64_t state_hash_step(uint64_t hash, const game* game) {
    assert(game);
    fnv1a fnv(hash);
    fnv.add_all(game->time, game->over, game->radius);

    const ship& player = game->players[0];
    fnv.add_all(player.position, player.velocity, player.angle, player.color, player.alive,
                player.age, player.chain_color, player.chain_count, player.score,
                player.chain_shown, player.last_shot_time);

    for (int32_t i = 0; i < game->ship_count; ++i) {
        const ship& enemy = game->ships[i];
        fnv.add(enemy.alive);
        if (enemy.alive != 0) {
            fnv.add_all(enemy.position, enemy.velocity, enemy.angle, enemy.color, enemy.age,
                        enemy.last_shot_time, enemy.enemy_group);
        }
    }

    fnv.add_all(game->shot_count, game->free_shot_index);
    for (int32_t i = 0; i < game->shot_count; ++i) {
        const shot& shot = game->shots[i];
        fnv.add(shot.active);
        if (shot.active != 0) {
            fnv.add_all(shot.position, shot.velocity, shot.age, shot.angle, shot.from_enemy,
                        shot.color);
        }
    }

    const enemy_handler& waves = *game->enemy_handler;
    fnv.add_all(waves.alive_count, waves.last_spawn_time, waves.current_group, waves.wave_spawned);
    for (const group_state& group : waves.groups) {
        fnv.add(group.alive);
        if (group.wave_size != 0) {
            fnv.add_all(group.wave_size, group.color, group.spawn_interval, group.speed,
                        group.shot_interval, group.entry, group.direction);
        }
    }
    return fnv.value();
}
