// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "loss.h"

#include "animation.h"
#include "qmath.h"

void loss_watch::remember(const game& game) {
    place = game.players[0].position;
    in_flight.resize(static_cast<size_t>(game.shot_count));
    for (size_t i = 0; i < in_flight.size(); ++i) {
        in_flight[i] = static_cast<uint8_t>(game.shots[i].active);
    }
}

const char* loss_watch::cause(const game& game) const {
    const ship& player = game.players[0];
    if (animation_is_looping(player.animation) != 0) {  // no shot blew it up
        // The step tests where the player was before it moves.
        const double d = math_distance(&place, nullptr);
        return d < 1.0 ? "hole" : d > game.radius ? "edge" : "hull";
    }
    for (size_t i = 0; i < in_flight.size(); ++i) {
        const shot& shot = game.shots[i];
        const bool harmful = shot.from_enemy == 0 || shot.color != player.color;
        if (in_flight[i] != 0 && shot.active == 0 && harmful &&
            math_distance(&shot.position, &player.position) < 0.2) {
            return shot.from_enemy != 0 ? "enemy-shot" : "own-shot";
        }
    }
    return "shot";
}
