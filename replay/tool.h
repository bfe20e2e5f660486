// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What the two programs say and where they are.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "json_writer.h"

// Prints "quorvane-replay: SUBJECT: REASON" on standard error and returns the given status.
int complain(std::string_view subject, std::string_view reason, int status = 2);

// Prints a report on standard output: as JSON, or as lines of a key and a value.
void print_report(const report& report, bool as_json);

std::string utc_time(uint32_t seconds);  // "2024-02-29 12:00:00 UTC"

// Where the running program is, with a slash at the end.
std::string own_folder();

// Standard input, output and error all lead somewhere: a file that is opened later would take the
// place of one that was closed, and be written into. Once, first of all.
void open_standard_streams();
