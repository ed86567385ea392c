/// Drawings as pixels.
#pragma once

#include "mpatool/waveform/drawing.h"

#include <cstdint>
#include <span>
#include <vector>

namespace mpatool {

/// Paints a drawing piece by piece, so that it never has to be in memory as a whole.
class Raster {
public:
    /// The drawing must outlive it.
    explicit Raster(const Drawing& drawing) : drawing_(drawing) {}

    /// Paints `rows` rows from `top` on. One byte a pixel, the number of its ink; valid until the next call.
    std::span<const std::uint8_t> Paint(std::int32_t top, std::int32_t rows);

private:
    void Fill(const Box& box, Ink ink);
    void Draw(const Boxes& boxes);
    void Draw(const Text& text);
    void DrawGlyph(char32_t character, std::int32_t left, std::int32_t top);

    const Drawing& drawing_;
    std::int32_t top_ = 0;
    std::int32_t rows_ = 0;
    std::vector<std::uint8_t> pixels_;
};

} // namespace mpatool
