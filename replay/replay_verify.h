// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Judging recordings: one by one, each as in a fresh process, and many of them on all cores.

#pragma once

#include <string>
#include <vector>

#include "recording_file.h"

struct verify_options {
    std::vector<std::string> files;
    bool names_from_stdin = false;  // instead of `files`
    char name_end = '\n';           // what ends a name on standard input
    bool json = false;
    bool course = false;  // with the JSON
    size_t jobs = 1;
    replay_salt salt{};
};

// Prints a verdict for each file, in the order of the names, and a summary. Returns the exit
// status: 0 if all are good, 1 if one is not, 2 if one could not be read.
int verify_files(const verify_options& options);
