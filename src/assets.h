// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Every picture of the game: which file has which texture id, and loading all of them.

#pragma once

#include <cstdint>

// Loads every picture of the asset table into the current video mode: 0, or the negative code of
// the group that failed, with a message on standard error.
int32_t load_textures();
void unload_textures();
