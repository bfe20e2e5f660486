// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "shell.h"

int main(int /*argument_count*/, char** /*arguments*/) { return shell_run(); }
