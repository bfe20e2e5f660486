// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The replay log and its file image, byte by byte, and the signature.

#include "replay.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <numeric>

#include "replay_modify.h"
#include "sha1.h"
#include "sim_support.h"

namespace {

using bytes = std::vector<uint8_t>;

std::string sha1_of(const bytes& data) {
    std::ostringstream text;
    for (const uint8_t byte : sha1(data.data(), data.size())) {
        text << std::hex << (byte >> 4) << (byte & 15);
    }
    return text.str();
}

// Both ends of each length code's range, known and unknown types.
struct record {
    uint32_t type, value;
    bytes encoded;
};
const record RECORDS[] = {{REPLAY_EVENT_TICK, 0, {0x09, 0}},
                          {REPLAY_EVENT_KEY_UP, 255, {0x0d, 0xff}},
                          {REPLAY_EVENT_KEY_DOWN, 256, {0x12, 1, 0}},
                          {REPLAY_EVENT_MOUSE_X, 65535, {0x16, 0xff, 0xff}},
                          {REPLAY_EVENT_MOUSE_Y, 65536, {0x1b, 1, 0, 0}},
                          {REPLAY_EVENT_TICK, 0xffffff, {0x0b, 0xff, 0xff, 0xff}},
                          {REPLAY_EVENT_SEED, 0x1000000, {0x04, 1, 0, 0, 0}},
                          {252, 0xfffefdfc, {0xfc, 0xff, 0xfe, 0xfd, 0xfc}}};
constexpr size_t RECORD_COUNT = std::size(RECORDS);

struct replay_test : sim_test {
    replay_test() {
        for (size_t i = 0; i < 12 * RECORD_COUNT; ++i) {  // more than the log's first allocation
            replay_add_event(log.get(), RECORDS[i % RECORD_COUNT].type,
                             RECORDS[i % RECORD_COUNT].value);
        }
    }

    // Loads a copy that ends where its memory ends, so that a sanitizer sees any read beyond.
    int32_t load(const bytes& image) {
        const std::unique_ptr<uint8_t[]> copy(new uint8_t[image.size()]);
        std::copy(image.begin(), image.end(), copy.get());
        return replay_set_data(loaded.get(), copy.get(), image.size());
    }

    bytes image() {
        uint8_t* data = nullptr;
        size_t length = 0;
        replay_get_data(log.get(), &data, &length);
        const std::unique_ptr<uint8_t, decltype(&std::free)> owner(data, &std::free);
        return bytes(data, data + length);
    }

    std::shared_ptr<replay> log{replay_init(), replay_destroy};
    std::shared_ptr<replay> loaded{replay_init(), replay_destroy};
};

TEST_F(replay_test, records_are_encoded_and_files_may_only_be_cut_between_them) {
    const bytes whole = image();
    bytes head(whole.begin(), whole.begin() + REPLAY_HEADER_SIZE);
    for (int32_t i = 0; i < log->event_count; ++i) {
        const record& r = RECORDS[static_cast<size_t>(i) % RECORD_COUNT];
        for (size_t n = 1; n <= r.encoded.size(); ++n) {
            head.push_back(r.encoded[n - 1]);
            replay_write_32(&head[71], static_cast<uint32_t>(head.size() - REPLAY_HEADER_SIZE));
            const bool complete = n == r.encoded.size();
            EXPECT_EQ(load(head), complete ? 0 : REPLAY_ERROR_EVENT) << head.size();
            EXPECT_EQ(loaded->loaded_count, complete ? i + 1 : i) << head.size();
        }
        EXPECT_EQ(loaded->events[i].type, r.type);
        EXPECT_EQ(loaded->events[i].value, r.value);
    }
    EXPECT_EQ(head, whole);
    while (!head.empty()) {
        head.pop_back();
        const bool is_short = head.size() < REPLAY_HEADER_SIZE;
        EXPECT_EQ(load(head), is_short ? REPLAY_ERROR_SHORT : REPLAY_ERROR_LENGTH) << head.size();
    }
}

TEST_F(replay_test, names_are_cut_padded_and_stripped) {
    const std::string full = "abcdefghijklmnopqrstuvwxyz01234\xc3";
    const strings cases[] = {{"", std::string(32, ' '), ""},  // set, written, loaded
                             {"A b", std::string(29, ' ') + "A b", "A b"},
                             {"  x ", std::string(28, ' ') + "  x ", "x "},
                             {full + "\xab and more", full, full}};
    replay_set_final_score(log.get(), 0x89abcdef);
    for (const strings& c : cases) {
        replay_set_player_name(log.get(), c[0].c_str());
        const bytes written = image();
        EXPECT_EQ(std::string(&written[31], &written[63]), c[1]);
        EXPECT_EQ(load(written), 0);
        EXPECT_EQ(loaded->player_name, c[2]);
        EXPECT_EQ(loaded->final_score, 0x89abcdefU);
        EXPECT_LE(static_cast<uint32_t>(std::time(nullptr)) - replay_read_32(&written[67]), 2U);
    }
}

// The example of FIPS 180-1 and, for the padding of every length, the digest of 201 digests: those
// of the bytes 0 to n - 1 for n = 0 to 200, in raw form, computed with another implementation.
TEST_F(replay_test, sha1_agrees_with_published_and_foreign_digests) {
    EXPECT_EQ(sha1_of({'a', 'b', 'c'}), "a9993e364706816aba3e25717850c26c9cd0d89d");
    bytes data(200);
    std::iota(data.begin(), data.end(), uint8_t{0});
    bytes digests;
    for (size_t n = 0; n <= data.size(); ++n) {
        const auto digest = sha1(data.data(), n);
        digests.insert(digests.end(), digest.begin(), digest.end());
    }
    EXPECT_EQ(sha1_of(digests), "30f906e3c78b841ee4b73d0cb2850660435758b3");
}

TEST_F(replay_test, signature_covers_everything_behind_it_and_a_salt_that_lies_nowhere_whole) {
    const bytes written = image();
    bytes signed_part(written.begin() + 26, written.end());
    uint8_t* salt = nullptr;
    size_t length = 0;
    replay_modify_data(&salt, &length);
    ASSERT_EQ(length, REPLAY_SALT_SIZE);
    signed_part.insert(signed_part.end(), salt, salt + length);
    const auto digest = sha1(signed_part.data(), signed_part.size());
    EXPECT_TRUE(std::equal(digest.begin(), digest.end(), &written[6]));

    std::ifstream file("/proc/self/exe", std::ios::binary);
    const std::string program(std::istreambuf_iterator<char>(file), {});
    EXPECT_NE(program.find("QRVNPL"), std::string::npos) << "this is the program";
    EXPECT_EQ(program.find(std::string(salt, salt + length)), std::string::npos);
    std::free(salt);
}

}  // namespace
