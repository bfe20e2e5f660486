// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Four functions of the freely distributable math library, release 5.3: the same result bits for
// the same argument bits on every machine with IEEE doubles. See fdlibm.cpp for origin and notice.

#pragma once

#include <cstdint>

double fdlibm_sin(double x);  // radians
double fdlibm_cos(double x);  // radians
double fdlibm_atan2(double y, double x);
// The same for each pair of `count`, sooner than one by one. No array overlaps another.
void fdlibm_atan2_many(int32_t count, const double* ys, const double* xs, double* results);
double fdlibm_sqrt(double x);  // correctly rounded; NaN below 0
