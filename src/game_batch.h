// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What makes a step of the game quick and changes nothing of it: bounds that spare exact distances,
// angles that are taken together, and a list of the shots in flight with a coarse map of the
// player's. The rules are in game.cpp and hold without any of this. Included there alone.

#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "game.h"
#include "qmath.h"

// Whether a distance is below a limit is decided by the exact distance alone. Squares are cheaper,
// and these bounds lie so far from the limits that no rounding can make the two disagree: a square
// beyond its bound settles the question, anything nearer goes on to the exact test.
inline constexpr double HOLE_CLEAR = 1.01;    // squares: farther than HOLE_RADIUS
inline constexpr double EDGE_CLEAR = 224.9;   // nearer than FIELD_EDGE
inline constexpr double PULL_CLEAR = 16.01;   // farther than OUTER_PULL
inline constexpr double ABSORB_BOUND = 0.26;  // above it: not within ABSORB_DISTANCE
inline constexpr double RAM_BOUND = 0.05;

static double squared_distance(vector a, vector b) {
    const double dx = a.x - b.x;
    const double dy = a.y - b.y;
    return dx * dx + dy * dy;
}

// True only if the point's distance from the origin lies between the two bounds for certain.
static bool is_clear(vector point, double inner, double outer) {
    const double square = point.x * point.x + point.y * point.y;
    return square > inner && square < outer;
}

// Directions that are wanted together: they cost half of what they cost one by one.
class angle_batch {
public:
    void add(vector direction, double* angle) {
        xs[count] = direction.x;
        ys[count] = direction.y;
        wanted[count] = angle;
        if (++count == CAPACITY) {
            finish();
        }
    }

    // Only now are the angles there.
    void finish() {
        double angles[CAPACITY];
        math_vector_angles(count, xs, ys, angles);
        for (int32_t i = 0; i < count; ++i) {
            *wanted[i] = angles[i];
        }
        count = 0;
    }

private:
    static constexpr int32_t CAPACITY = 64;
    int32_t count = 0;
    double xs[CAPACITY];
    double ys[CAPACITY];
    double* wanted[CAPACITY];
};

// The shots in flight, in slot order, and which of them are the player's and roughly where. Made
// once for all ships of a step: meanwhile no shot moves, the player fires none, and a shot that an
// enemy fires hits no enemy and is too young to touch the player.
struct shots_in_flight {
    static constexpr int32_t CAPACITY = 256;
    int32_t end;  // the slot behind the last one examined
    int32_t count;
    int32_t slots[CAPACITY];
    int32_t player_count;
    int32_t player_slots[CAPACITY];
    // A bit for each square unit of the field, set if a shot of the player may be within reach of a
    // point in it: most enemies are nowhere near one, and this is the cheapest way to know.
    uint32_t near_squares[32];
};

// Row or column of a coordinate. What lies outside counts as in the outermost one.
static int32_t square_of(double coordinate) {
    return static_cast<int32_t>(std::clamp(coordinate + 16.0, 0.0, 31.0));
}

static void mark_squares_near(vector point, shots_in_flight* shots) {
    constexpr double REACH = 0.51;  // above ENEMY_HIT_DISTANCE
    const int32_t left = square_of(point.x - REACH);
    const int32_t right = square_of(point.x + REACH);
    const auto columns = static_cast<uint32_t>((uint64_t{2} << right) - (uint64_t{1} << left));
    const int32_t bottom = square_of(point.y + REACH);
    for (int32_t row = square_of(point.y - REACH); row <= bottom; ++row) {
        shots->near_squares[row] |= columns;
    }
}

// Collects from slot `first` on, as many as fit.
static void collect_shots(const game* game, int32_t first, shots_in_flight* shots) {
    const shot* pool = game->shots;
    const int32_t end = game->shot_count;
    int32_t count = 0;
    int32_t player_count = 0;
    int32_t slot = first;
    std::memset(shots->near_squares, 0, sizeof(shots->near_squares));
    for (; slot < end && count < shots_in_flight::CAPACITY; ++slot) {
        const shot& shot = pool[slot];
        if (shot.active == 0) {
            continue;
        }
        shots->slots[count++] = slot;
        if (shot.from_enemy == 0) {
            shots->player_slots[player_count++] = slot;
            mark_squares_near(shot.position, shots);
        }
    }
    shots->count = count;
    shots->player_count = player_count;
    shots->end = slot;
}

static bool any_near(const shots_in_flight& shots, vector point) {
    return (shots.near_squares[square_of(point.y)] >> square_of(point.x) & 1U) != 0;
}
