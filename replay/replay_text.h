// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// A recording as text that can be read, compared and edited, and back to the same bytes. The text
// holds whatever a loadable file can: any name, signature, event type and width.

#pragma once

#include <string>

#include "recording.h"

void dump_recording(const recording& recording);  // to standard output

// Makes a file of a text; "-" is standard input and output. Returns an exit status, and has then
// printed the reason.
int pack_recording(const std::string& text_path, const std::string& out_path);
