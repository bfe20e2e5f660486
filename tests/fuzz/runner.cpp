// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Takes a target through the files of a folder, and tells what each has cost.

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz.h"

int main(int argument_count, char** arguments) {
    assert(argument_count == 2);
    assert(std::freopen("/dev/null", "w", stdout) != nullptr);
    size_t count = 0;
    for (const auto& file : std::filesystem::directory_iterator(arguments[1])) {
        std::fprintf(stderr, "%s", file.path().c_str());  // before it can break anything
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(stream), {});
        const std::vector<uint8_t> input(bytes.begin(), bytes.end());
        const auto start = std::chrono::steady_clock::now();
        LLVMFuzzerTestOneInput(input.data(), input.size());
        const std::chrono::duration<double, std::micro> spent =
            std::chrono::steady_clock::now() - start;
        std::fprintf(stderr, "\t%zu bytes\t%.0f us\n", input.size(), spent.count());
        ++count;
    }
    std::fprintf(stderr, "%zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
