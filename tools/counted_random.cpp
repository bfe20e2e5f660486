// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Defining the generator's operations here keeps the simulation library's own out of the program,
// with any linker and with link-time optimisation, where wrapping a symbol finds nothing to wrap.

#include "counted_random.h"

#define genrand_int32 uncounted_random
#include "mt19937.cpp"  // NOLINT(bugprone-suspicious-include): its code, under another name
#undef genrand_int32

uint32_t counted_draws = 0;

uint32_t genrand_int32();
uint32_t genrand_int32() {
    ++counted_draws;
    return uncounted_random();
}
