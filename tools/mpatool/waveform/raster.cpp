#include "mpatool/waveform/raster.h"

#include "mpatool/waveform/glyphs.h"

#include <algorithm>
#include <iterator>

namespace mpatool {

namespace {

constexpr std::int32_t kGlyphColumns = 5;
constexpr std::int32_t kAdvance = kGlyphColumns + 1;
constexpr std::int32_t kRowsAboveBaseline = 8;
constexpr char32_t kFirstGlyph = ' ';

std::int32_t LeftOf(const Text& text, std::size_t characters, std::int32_t scale) {
    const std::int32_t width = static_cast<std::int32_t>(characters) * kAdvance * scale - scale;
    switch (text.anchor) {
    case Anchor::kLeft:
        break;
    case Anchor::kCentre:
        return text.x - width / 2;
    case Anchor::kRight:
        return text.x - width;
    }
    return text.x;
}

} // namespace

std::span<const std::uint8_t> Raster::Paint(std::int32_t top, std::int32_t rows) {
    top_ = top;
    rows_ = rows;
    pixels_.assign(static_cast<std::size_t>(drawing_.Width()) * static_cast<std::size_t>(rows),
                   static_cast<std::uint8_t>(Ink::kPaper));
    for (const Shape& shape : drawing_.Shapes())
        std::visit([this](const auto& kind) { Draw(kind); }, shape);
    return pixels_;
}

/// What lies outside of the piece is left out.
void Raster::Fill(const Box& box, Ink ink) {
    const std::int32_t left = std::max(box.left, 0);
    const std::int32_t right = std::min(box.Right(), drawing_.Width());
    const std::int32_t bottom = std::min(box.Bottom(), top_ + rows_);
    if (left >= right)
        return;
    for (std::int32_t y = std::max(box.top, top_); y < bottom; ++y) {
        const std::size_t row =
            static_cast<std::size_t>(y - top_) * static_cast<std::size_t>(drawing_.Width());
        std::fill_n(pixels_.begin() + static_cast<std::ptrdiff_t>(row + static_cast<std::size_t>(left)),
                    right - left, static_cast<std::uint8_t>(ink));
    }
}

void Raster::Draw(const Boxes& boxes) {
    for (const Box& box : boxes.boxes)
        Fill(box, boxes.ink);
}

void Raster::Draw(const Text& text) {
    const std::int32_t scale = drawing_.TextScale();
    const std::u32string characters = Characters(text.text);
    std::int32_t left = LeftOf(text, characters.size(), scale);
    for (const char32_t character : characters) {
        DrawGlyph(character, left, text.baseline - kRowsAboveBaseline * scale);
        left += kAdvance * scale;
    }
}

void Raster::DrawGlyph(char32_t character, std::int32_t left, std::int32_t top) {
    const std::int32_t scale = drawing_.TextScale();
    constexpr std::size_t kLast = std::size(kGlyphs) - 1;
    const bool isDrawn = character >= kFirstGlyph && character - kFirstGlyph < kLast;
    for (const unsigned row : kGlyphs[isDrawn ? character - kFirstGlyph : kLast]) {
        for (std::int32_t column = 0; column < kGlyphColumns; ++column)
            if ((row >> (kGlyphColumns - 1 - column) & 1) != 0)
                Fill({left + column * scale, top, scale, scale}, Ink::kText);
        top += scale;
    }
}

} // namespace mpatool
