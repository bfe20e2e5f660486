// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include <openssl/sha.h>

#include "game_key.h"
#include "json_writer.h"

std::string game_key_digest(std::span<const uint8_t> bytes) {
    uint8_t digest[SHA256_DIGEST_LENGTH];
    SHA256(bytes.data(), bytes.size(), digest);
    std::string digits;
    for (const uint8_t byte : digest) {
        digits += format("%02x", byte);
    }
    return digits;
}
