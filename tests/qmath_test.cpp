// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The geometry functions and the routines below them, compared bit for bit with two tables made by
// other implementations: math_vectors/vectors.tsv (its generator lies beside it) and
// golden/math.tsv.

#include "qmath.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <random>

#include "fdlibm.h"
#include "sim_support.h"

namespace {

double double_of(const std::string& bits) {
    return std::bit_cast<double>(uint64_t{std::stoull(bits, nullptr, 16)});
}

vector point(const double* a) { return {a[0], a[1]}; }

double distance(vector a, vector b) { return math_distance(&a, &b); }

const std::map<std::string, double (*)(const double* a)> FUNCTIONS = {
    {"sin", [](const double* a) { return math_sin(a[0]); }},
    {"cos", [](const double* a) { return math_cos(a[0]); }},
    {"sqrt", [](const double* a) { return fdlibm_sqrt(a[0]); }},
    {"atan2", [](const double* a) { return fdlibm_atan2(a[0], a[1]); }},
    {"wrap", [](const double* a) { return math_wrap(a[0], a[1]); }},
    {"degrees", [](const double* a) { return math_heading_to_degrees(a[0]); }},
    {"vecangle", [](const double* a) { return math_vector_angle(point(a)); }},
    {"distance", [](const double* a) { return distance(point(a), point(a + 2)); }}};

// An intersection's cells: 0, or 1 and the point.
strings intersect(const double* a) {
    vector out = {};
    if (math_line_intersect(point(a), point(a + 2), point(a + 4), point(a + 6), &out) == 0) {
        return {"0"};
    }
    return {"1", bits_of(out.x), bits_of(out.y)};
}

// Each line holds a name, the arguments and the results.
void compare_table(const std::string& path, size_t lines) {
    const std::vector<strings> table = read_table(path, ' ');
    EXPECT_EQ(table.size(), lines);
    int failures = 0;
    for (const strings& line : table) {
        const bool points = line[0] == "intersect";
        const size_t results = points ? 9 : line.size() - 1;
        std::vector<double> arguments;
        std::transform(&line[1], &line[results], std::back_inserter(arguments), double_of);
        const strings expected(&line[results], &line.back() + 1);
        const strings actual = points ? intersect(arguments.data())
                                      : strings{bits_of(FUNCTIONS.at(line[0])(arguments.data()))};
        if (actual != expected && ++failures <= 10) {
            ADD_FAILURE() << testing::PrintToString(line)
                          << "\nactual: " << testing::PrintToString(actual);
        }
    }
}

TEST(qmath, agrees_with_strict_math) { compare_table("math_vectors/vectors.tsv", 6315); }
TEST(qmath, agrees_with_golden_results) { compare_table("golden/math.tsv", 7828); }

// Many angles at once are the same angles, also where the quick way does not reach.
TEST(qmath, angles_together_are_those_one_by_one) {
    std::vector<double> values;
    for (const double tenths : {4.375, 6.875, 11.875, 24.375, 10.0}) {  // where the series change
        const double ratio = tenths / 10.0;
        values.insert(values.end(),
                      {ratio, std::nextafter(ratio, 0.0), std::nextafter(ratio, 9.0)});
    }
    values.insert(values.end(), {0.0, 1e-8, 1e8, 1e-300, 5e-324, 1e300, 1e-9, 1e9,
                                 std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()});
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> exponent(-30.0, 30.0);
    for (int i = 0; i < 300; ++i) {
        values.push_back(std::exp2(exponent(random)));
    }
    std::vector<double> xs;
    std::vector<double> ys;
    for (const double x : values) {
        for (const double y : values) {
            for (const int signs : {0, 1, 2, 3}) {
                xs.push_back((signs & 1) != 0 ? -x : x);
                ys.push_back((signs & 2) != 0 ? -y : y);
            }
        }
    }
    std::vector<double> angles(xs.size());
    math_vector_angles(static_cast<int32_t>(xs.size()), xs.data(), ys.data(), angles.data());
    int failures = 0;
    for (size_t i = 0; i < xs.size() && failures < 10; ++i) {
        const std::string expected = bits_of(math_vector_angle({xs[i], ys[i]}));
        if (bits_of(angles[i]) != expected) {
            ++failures;
            ADD_FAILURE() << "(" << xs[i] << ", " << ys[i] << "): expected " << expected
                          << ", actual " << bits_of(angles[i]);
        }
    }
}

// A search for the period would never end on these.
TEST(qmath, wrap_returns_for_hopeless_arguments) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(math_wrap(infinity, 1.0), infinity);
    EXPECT_EQ(math_wrap(-infinity, 1.0), -infinity);
    EXPECT_EQ(bits_of(math_wrap(std::numeric_limits<double>::quiet_NaN(), 1.0)), "nan");
    EXPECT_EQ(math_wrap(5.0, -1.0), 5.0);
}

}  // namespace
