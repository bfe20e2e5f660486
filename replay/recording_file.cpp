// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "recording_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstring>

#include "json_writer.h"

namespace {

bool is_regular(const struct stat& status, std::string* reason) {
    if (!S_ISREG(status.st_mode)) {
        *reason = S_ISDIR(status.st_mode) ? "it is a directory" : "it is not a regular file";
    }
    return S_ISREG(status.st_mode);
}

}  // namespace

load_status recording_file_read(const std::string& path, std::vector<uint8_t>* bytes,
                                std::string* reason) {
    uint64_t size = 0;
    const file_pointer file = open_regular(path, &size, reason);
    if (!file) {
        return LOAD_UNREADABLE;
    }
    bytes->resize(static_cast<size_t>(std::min<uint64_t>(size, REPLAY_HEADER_SIZE)));
    const auto read_rest = [&](size_t have) {
        errno = 0;
        const size_t rest = bytes->size() - have;
        if (std::fread(bytes->data() + have, 1, rest, file.get()) == rest) {
            return true;
        }
        *reason = errno != 0 ? std::strerror(errno) : "it cannot be read to its end";
        return false;
    };
    if (!read_rest(0)) {
        return LOAD_UNREADABLE;
    }
    *reason = recording_header_error(*bytes, size);
    if (!reason->empty()) {
        return LOAD_BROKEN;
    }
    bytes->resize(static_cast<size_t>(size));
    return read_rest(REPLAY_HEADER_SIZE) ? LOAD_OK : LOAD_UNREADABLE;
}

load_status recording_file_load(const std::string& path, recording_file* file,
                                std::string* reason) {
    *file = {};
    file->path = path;
    const load_status status = recording_file_read(path, &file->bytes, reason);
    if (status == LOAD_OK) {
        *reason = recording_read(file->bytes, &file->log);
    }
    return status != LOAD_OK || reason->empty() ? status : LOAD_BROKEN;
}

file_pointer open_regular(const std::string& path, uint64_t* size, std::string* reason) {
    if (path.find('\0') != std::string::npos) {
        *reason = "it has a zero byte in its name; names that end with one need -0";
        return nullptr;
    }
    // Looked at before it is opened, since opening a device may act, and once more when it is open,
    // since it may be another one by then.
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && !is_regular(status, reason)) {
        return nullptr;
    }
    const int handle = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (handle < 0) {
        *reason = std::strerror(errno);
        return nullptr;
    }
    const bool is_known = fstat(handle, &status) == 0;
    file_pointer file(is_known && S_ISREG(status.st_mode) ? fdopen(handle, "rb") : nullptr);
    if (!file) {
        if (!is_known || is_regular(status, reason)) {
            *reason = std::strerror(errno);
        }
        close(handle);
    }
    *size = static_cast<uint64_t>(status.st_size);
    return file;
}

bool read_salt(const std::string& path, replay_salt* salt, std::string* reason) {
    if (path.empty()) {
        *salt = built_in_salt();
        return true;
    }
    uint64_t size = 0;
    const file_pointer file = open_regular(path, &size, reason);
    if (file && (size != salt->size() ||
                 std::fread(salt->data(), 1, salt->size(), file.get()) != salt->size())) {
        *reason = format("it has %" PRIu64 " bytes, a salt has %zu", size, salt->size());
        return false;
    }
    return file != nullptr;
}
