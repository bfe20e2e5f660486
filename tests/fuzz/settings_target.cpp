// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The settings file: whatever it holds, what was read is saved and read again to the same record.

#include <memory>
#include <tuple>

#include "fuzz.h"
#include "settings.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const memory_file file(data, size);
    const std::shared_ptr<settings> read(settings_init(), settings_destroy);
    settings_load(read.get(), file.path.c_str());
    assert(read->name[SETTINGS_TEXT_MAX] == '\0' && read->replay[SETTINGS_TEXT_MAX] == '\0');
    const memory_file saved(nullptr, 0);
    assert(settings_save(read.get(), saved.path.c_str()) == 1);
    const std::shared_ptr<settings> again(settings_init(), settings_destroy);
    assert(settings_load(again.get(), saved.path.c_str()) == 1);
    const auto fields = [](const settings& s) {
        return std::tuple(s.width, s.height, std::string(s.name), std::string(s.replay), s.mouse,
                          s.fullscreen, s.music);
    };
    assert(fields(*read) == fields(*again));
    return 0;
}
