// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Assertions are part of the program's behaviour: a broken precondition stops it in every build
// type, with the expression, the operation and the source file on standard error. Include this
// header, never <cassert> itself; a packager's build flags cannot switch the checks off.

#pragma once

#undef NDEBUG
#include <cassert>
