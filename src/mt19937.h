// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The generator of every random number that reaches the game: MT19937 of Makoto Matsumoto and
// Takuji Nishimura, with the seeding of their 2002 revision (mt19937ar). One process-wide state,
// used from the main thread only; a recording replays because nothing else draws from it.
//
// A plain loop rather than std::mt19937: the sequence is the same, and a generator that was never
// seeded, its index and its cost stay visible here.

#pragma once

#include <cstdint>

// Starts the sequence of `seed`.
void init_genrand(uint32_t seed);

// The next 32-bit number. A generator that was never seeded starts with seed 5489.
uint32_t genrand_int32();

// Numbers drawn by this process so far, modulo 2^32, whatever it was seeded with meanwhile.
uint32_t genrand_count();
