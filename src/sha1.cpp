// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "sha1.h"

#include <bit>
#include <cstring>

namespace {

constexpr size_t BLOCK_SIZE = 64;
constexpr size_t LENGTH_OFFSET = 56;  // where the message length stands in the last block

using chain_values = std::array<uint32_t, 5>;

uint32_t load_word(const uint8_t* p) {
    return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | uint32_t{p[3]};
}

void process_block(chain_values& h, const uint8_t* block) {
    std::array<uint32_t, 80> w;
    for (size_t t = 0; t < 16; ++t) {
        w[t] = load_word(block + 4 * t);
    }
    for (size_t t = 16; t < 80; ++t) {
        w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    }
    auto [a, b, c, d, e] = h;
    for (size_t t = 0; t < 80; ++t) {
        uint32_t f = 0;
        uint32_t k = 0;
        if (t < 20) {
            f = (b & c) | (~b & d);
            k = 0x5a827999U;
        } else if (t < 40) {
            f = b ^ c ^ d;
            k = 0x6ed9eba1U;
        } else if (t < 60) {
            f = (b & c) | (b & d) | (c & d);
            k = 0x8f1bbcdcU;
        } else {
            f = b ^ c ^ d;
            k = 0xca62c1d6U;
        }
        const uint32_t next = std::rotl(a, 5) + f + e + w[t] + k;
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    h[0] += a;
    h[1] += b;
    h[2] += c;
    h[3] += d;
    h[4] += e;
}

}  // namespace

std::array<uint8_t, SHA1_DIGEST_SIZE> sha1(const uint8_t* data, size_t length) {
    chain_values h = {0x67452301U, 0xefcdab89U, 0x98badcfeU, 0x10325476U, 0xc3d2e1f0U};
    size_t done = 0;
    for (; length - done >= BLOCK_SIZE; done += BLOCK_SIZE) {
        process_block(h, data + done);
    }

    // The rest of the message, a one bit, zeros and the length in bits: one block or two.
    std::array<uint8_t, 2 * BLOCK_SIZE> tail{};
    const size_t rest = length - done;
    if (rest > 0) {
        std::memcpy(tail.data(), data + done, rest);
    }
    tail[rest] = 0x80;
    const size_t tail_size = rest < LENGTH_OFFSET ? BLOCK_SIZE : 2 * BLOCK_SIZE;
    const uint64_t bit_count = uint64_t{length} * 8;
    for (size_t i = 0; i < 8; ++i) {
        tail[tail_size - 1 - i] = static_cast<uint8_t>(bit_count >> (8 * i));
    }
    for (size_t at = 0; at < tail_size; at += BLOCK_SIZE) {
        process_block(h, tail.data() + at);
    }

    std::array<uint8_t, SHA1_DIGEST_SIZE> digest;
    for (size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<uint8_t>(h[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}
