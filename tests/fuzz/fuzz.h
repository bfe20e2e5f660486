// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What the fuzz targets share. A target takes any bytes, hands them to the program and asserts what
// must hold whatever they are. The same sources make two programs each: one in which libFuzzer
// looks for bytes that break something (tests/fuzz/run), and one that takes the files of the
// corpus (runner.cpp), which is a test like any other.

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "assertion.h"
#include "replay.h"

// What each target defines. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// A file that lives in memory, for readers that want a path.
struct memory_file {
    memory_file(const uint8_t* data, size_t size)
        : descriptor(memfd_create("fuzz", 0)), path("/proc/self/fd/" + std::to_string(descriptor)) {
        const ssize_t written = write(descriptor, data, size);
        assert(written == static_cast<ssize_t>(size));
    }
    ~memory_file() { close(descriptor); }
    memory_file(const memory_file&) = delete;
    memory_file& operator=(const memory_file&) = delete;

    const int descriptor;
    const std::string path;
};

// The bytes as a recording whose length field is right: a recording already, or event records that
// still want a header. A change of length would otherwise end nearly every attempt at the header.
inline std::vector<uint8_t> as_recording(const uint8_t* data, size_t size) {
    std::vector<uint8_t> image(data, data + size);
    if (size < REPLAY_HEADER_SIZE || std::memcmp(data, "QRVNPL", 6) != 0) {
        uint8_t header[REPLAY_HEADER_SIZE] = {'Q', 'R', 'V', 'N', 'P', 'L'};
        header[27] = 3;  // format version
        header[29] = 4;
        std::memset(header + 31, ' ', REPLAY_NAME_SIZE);
        image.insert(image.begin(), header, header + sizeof(header));
    }
    replay_write_32(image.data() + 71, static_cast<uint32_t>(image.size() - REPLAY_HEADER_SIZE));
    return image;
}
