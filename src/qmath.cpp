// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Recordings depend on every bit of these results: the formulas keep the order in which they stand.

#include "qmath.h"

#include <cmath>

#include "fdlibm.h"

double math_sin(double angle) { return fdlibm_sin(angle); }

double math_cos(double angle) { return fdlibm_cos(angle); }

double math_wrap(double x, double m) {
    if (m == 0.0) {
        return 0.0;
    }
    if (!std::isfinite(x) || !(m > 0.0)) {
        return x;
    }
    // The usual cases, which give what the count below would.
    if (x < m) {
        return x < 0.0 ? x + m : x;
    }
    if (x < 2.0 * m) {
        return x - m;
    }
    // Beyond this many periods consecutive multiples of m are no longer told apart, and x has no
    // meaningful remainder.
    constexpr double MOST_PERIODS = 1125899906842624.0;  // 2^50
    const double periods = x / m;
    if (!(periods < MOST_PERIODS)) {
        return 0.0;
    }
    // The smallest i with i * m > x, each multiple formed by one product. Products grow with i, so
    // the count may start safely below x / m instead of at 0 when x is many periods.
    int64_t i = periods > 8.0 ? static_cast<int64_t>(periods) - 2 : 0;
    while (static_cast<double>(i) * m <= x) {
        ++i;
    }
    return x - static_cast<double>(i - 1) * m;
}

double math_vector_angle(vector v) {
    return math_wrap(fdlibm_atan2(v.y, v.x) + MATH_TWO_PI, MATH_TWO_PI);
}

void math_vector_angles(int32_t count, const double* xs, const double* ys, double* angles) {
    fdlibm_atan2_many(count, ys, xs, angles);
    for (int32_t i = 0; i < count; ++i) {
        angles[i] = math_wrap(angles[i] + MATH_TWO_PI, MATH_TWO_PI);
    }
}

double math_distance(const vector* a, const vector* b) {
    constexpr vector ORIGIN = {0.0, 0.0};
    const vector from = a != nullptr ? *a : ORIGIN;
    const vector to = b != nullptr ? *b : ORIGIN;
    const double dx = from.x - to.x;
    const double dy = from.y - to.y;
    return fdlibm_sqrt(dx * dx + dy * dy);
}

double math_heading_to_degrees(double angle) {
    return math_wrap(angle * 180.0 / MATH_PI + 270.0, 360.0);
}

int32_t math_line_intersect(vector p1, vector p2, vector p3, vector p4, vector* out) {
    const double a1 = p2.y - p1.y;
    const double b1 = p1.x - p2.x;
    const double a2 = p4.y - p3.y;
    const double b2 = p3.x - p4.x;
    const double det = a1 * b2 - a2 * b1;
    if (det == 0.0) {
        return 0;
    }
    const double k1 = p2.x * p1.y - p1.x * p2.y;
    const double k2 = p4.x * p3.y - p3.x * p4.y;
    out->x = (b1 * k2 - b2 * k1) / det;
    out->y = (a2 * k1 - a1 * k2) / det;
    return 1;
}
