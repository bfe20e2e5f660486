// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Recordings and salts in files that anybody may have put there.

#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "recording.h"

// The numbers are exit statuses.
enum load_status {
    LOAD_OK = 0,
    LOAD_BROKEN = 1,      // read, and not a recording
    LOAD_UNREADABLE = 2,  // missing, forbidden or not a regular file
};

struct recording_file {
    std::string path;
    std::vector<uint8_t> bytes;
    recording log;  // of these bytes
};

// Reads a file's bytes. Opens regular files only, and reads no more than the header of a file that
// the header condemns. On failure `reason` says why.
load_status recording_file_read(const std::string& path, std::vector<uint8_t>* bytes,
                                std::string* reason);

// The same, and looks through the log.
load_status recording_file_load(const std::string& path, recording_file* file, std::string* reason);

struct file_closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using file_pointer = std::unique_ptr<std::FILE, file_closer>;

// Opens a regular file for reading, or returns null and the reason. Never waits: a pipe that takes
// the file's place meanwhile is refused like one that was there before.
file_pointer open_regular(const std::string& path, uint64_t* size, std::string* reason);

// The salt in a file, or the built-in one for an empty path; false and the reason if there is none.
bool read_salt(const std::string& path, replay_salt* salt, std::string* reason);
