/// PNG files, read back.
#pragma once

#include "mpatool/waveform/drawing.h"
#include "support/test_files.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace test {

struct Picture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> pixels; ///< red, green, blue

    bool Shows(std::int32_t x, std::int32_t y, mpatool::Ink ink) const;
};

/// By libpng. A file that it does not read fails the test and gives an empty picture.
Picture ReadPng(std::string_view bytes);

} // namespace test
