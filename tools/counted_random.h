// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The game's generator of random numbers, with a count of the numbers drawn. A program that links
// this has the simulation draw from it.

#pragma once

#include <cstdint>

extern uint32_t counted_draws;
