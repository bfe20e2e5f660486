// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// How often the project's code has asked for memory.

#pragma once

#include <cstdint>

extern int64_t heap_requests;
