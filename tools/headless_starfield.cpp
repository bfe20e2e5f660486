// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// No stars: the game never reads them. A file of its own, so that a program that links the real
// starfield gets that one.

#include "starfield.h"

starfield* starfield_init(float /*radius*/) { return nullptr; }

void starfield_destroy(starfield* /*starfield*/) {}

void starfield_update(starfield* /*starfield*/, int32_t /*elapsed*/) {}
