// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The signing salt. It is a deployment value: the build chooses the table of differences from
// which it is summed up at run time, so that the salt never lies whole in the binary. That keeps
// nobody out who owns the binary; it only stops casual edits of a replay file.

#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr size_t REPLAY_SALT_SIZE = 77;

// Appends the salt to the malloc'ed buffer at *data (null with length 0 is allowed), reallocating
// it, and adds REPLAY_SALT_SIZE to *length. The caller keeps ownership; no memory is fatal.
void replay_modify_data(uint8_t** data, size_t* length);
