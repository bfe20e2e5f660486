// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The game's geometry. Everything that reaches the game state goes through these functions, which
// use this program's own fdlibm routines and never the platform's math library, so that a game is
// the same game on every machine, bit for bit.

#pragma once

#include <cstdint>

inline constexpr double MATH_PI = 3.141592653589793;
inline constexpr double MATH_TWO_PI = 6.283185307179586;
inline constexpr double MATH_HALF_PI = 1.5707963267948966;

struct vector {
    double x;
    double y;
};

double math_sin(double angle);  // radians
double math_cos(double angle);  // radians

// x reduced by whole multiples of m: in [0, m) for x >= 0, x + m for x < 0 (callers add a period
// first), 0 for m = 0. An x that is not finite, or a negative m, returns x; one of
// 2^50 periods or more, which no game reaches, returns 0.
double math_wrap(double x, double m);

// Direction of the vector in radians, in [0, 2 pi).
double math_vector_angle(vector v);
// The same for each of `count` vectors, sooner than one by one. No array overlaps another.
void math_vector_angles(int32_t count, const double* xs, const double* ys, double* angles);

// Distance between two points; a null pointer stands for the origin.
double math_distance(const vector* a, const vector* b);

// A heading in radians as a sprite's rotation in degrees, in [0, 360): pictures point up, so a
// heading of pi/2 is 0 degrees.
double math_heading_to_degrees(double angle);

// Where the infinite lines p1-p2 and p3-p4 meet: 1 and the point in *out, or 0 with *out untouched
// when they are parallel.
int32_t math_line_intersect(vector p1, vector p2, vector p3, vector p4, vector* out);
