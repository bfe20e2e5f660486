// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "replay_modify.h"

#include <cstdlib>
#include <iterator>

#include "assertion.h"
#include QUORVANE_SALT_TABLE

static_assert(std::size(REPLAY_SALT_DELTAS) == REPLAY_SALT_SIZE);

void replay_modify_data(uint8_t** data, size_t* length) {
    assert(data);
    assert(length);
    *data = static_cast<uint8_t*>(std::realloc(*data, *length + REPLAY_SALT_SIZE));
    assert(*data);
    uint8_t salt_byte = 0;
    for (const int8_t delta : REPLAY_SALT_DELTAS) {
        salt_byte = static_cast<uint8_t>(salt_byte + delta);
        (*data)[(*length)++] = salt_byte;
    }
}
