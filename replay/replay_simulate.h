// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Printing what a recording's game leaves, step by step, and where two games part.

#pragma once

#include <string>

#include "recording_file.h"

// Prints the final state of a game; with `trace`, a line for each step before it.
void simulate(const recording_file& file, bool trace, bool json);

// Prints where a game parts from another one: a recording, or the text that simulate printed for
// one with `trace`, perhaps by another build. Returns an exit status: 0 if they are the same.
int simulate_diff(const recording_file& file, const std::string& other, bool json);
