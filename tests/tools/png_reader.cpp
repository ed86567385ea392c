#include "tools/png_reader.h"

#include <gtest/gtest.h>
#include <png.h>

namespace test {

bool Picture::Shows(std::int32_t x, std::int32_t y, mpatool::Ink ink) const {
    const mpatool::Color color = mpatool::ColorOf(ink);
    const std::size_t at =
        3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    return pixels.at(at) == color.red && pixels.at(at + 1) == color.green && pixels.at(at + 2) == color.blue;
}

Picture ReadPng(std::string_view bytes) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) {
        ADD_FAILURE() << image.message;
        return {};
    }
    image.format = PNG_FORMAT_RGB;
    Picture picture = {static_cast<std::int32_t>(image.width), static_cast<std::int32_t>(image.height),
                       std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
    if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0) {
        ADD_FAILURE() << image.message;
        return {};
    }
    return picture;
}

} // namespace test
