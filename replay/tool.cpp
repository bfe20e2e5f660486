// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "tool.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

int complain(std::string_view subject, std::string_view reason, int status) {
    std::fprintf(stderr, "quorvane-replay: %s: %s\n",
                 subject.empty() ? "an empty name" : printable(subject).c_str(),
                 printable(reason).c_str());
    return status;
}

void print_report(const report& report, bool as_json) {
    std::fputs((as_json ? report.json() : report.text(" ", "\n")).c_str(), stdout);
}

std::string utc_time(uint32_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    char text[32];
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S UTC", gmtime_r(&time, &parts));
    return text;
}

std::string own_folder() {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
    const std::string_view whole(path, static_cast<size_t>(std::max<ssize_t>(length, 0)));
    return std::string(whole.substr(0, whole.rfind('/') + 1));
}

void open_standard_streams() {
    for (int handle = open("/dev/null", O_RDWR); handle >= 0; handle = dup(handle)) {
        if (handle > STDERR_FILENO) {
            close(handle);
            return;
        }
    }
}
