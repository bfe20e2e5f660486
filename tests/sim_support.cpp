// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "sim_support.h"

#include <bit>
#include <cmath>
#include <fstream>
#include <iomanip>

sim_test::sim_test() {
    headless_services = {};
    heard_sound = [this](uint32_t id) { sounds.push_back(id); };
    headless_services.on_delay = [this](uint32_t ms) { delays.push_back(ms); };
}

sim_test::~sim_test() {
    headless_services = {};
    heard_sound = nullptr;
}

std::vector<strings> read_table(const std::string& path, char separator) {
    std::vector<strings> table;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        table.emplace_back();
        std::istringstream text(line);
        for (std::string cell; std::getline(text, cell, separator);) {
            table.back().push_back(cell);
        }
    }
    return table;
}

std::string hex_of(uint64_t value) {
    std::ostringstream text;
    text << std::hex << std::setw(16) << std::setfill('0') << value;
    return text.str();
}

std::string bits_of(double value) {
    return std::isnan(value) ? "nan" : hex_of(std::bit_cast<uint64_t>(value));
}
