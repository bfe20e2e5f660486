// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The geometry functions and the routines below them, compared bit for bit with two tables made by
// other implementations: math_vectors/vectors.tsv (its generator lies beside it) and
// golden/math.tsv.

#include "qmath.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <map>

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

// A search for the period would never end on these.
TEST(qmath, wrap_returns_for_hopeless_arguments) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(math_wrap(infinity, 1.0), infinity);
    EXPECT_EQ(math_wrap(-infinity, 1.0), -infinity);
    EXPECT_EQ(bits_of(math_wrap(std::numeric_limits<double>::quiet_NaN(), 1.0)), "nan");
    EXPECT_EQ(math_wrap(5.0, -1.0), 5.0);
}

}  // namespace
