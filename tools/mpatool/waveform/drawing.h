/// A picture before it is written: boxes and text on paper, in pixels from the upper left corner.
///
/// Everything is axis-parallel and lies on whole pixels, so that every writer shows the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace mpatool {

/// What is drawn; it chooses the colour.
enum class Ink : std::uint8_t {
    kPaper,
    kPanel,
    kGrid,
    kAxis,
    kText,
    kPeaks,
    kRms,
    kFullScale,
    kRateRange,
    kRate,
    kReservoirRange,
    kReservoir,
    kLong,
    kStart,
    kShort,
    kStop,
    kMixed,
};
inline constexpr std::size_t kInks = static_cast<std::size_t>(Ink::kMixed) + 1;

struct Color {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

/// Told apart by colour-blind people (mostly Okabe and Ito's colours) and by lightness, in print.
Color ColorOf(Ink ink);

/// "peaks", "full-scale": as a class in SVG.
const char* NameOf(Ink ink);

struct Box {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    std::int32_t Right() const { return left + width; }
    std::int32_t Bottom() const { return top + height; }

    bool operator==(const Box&) const = default;
};

/// Boxes of one meaning.
struct Boxes {
    Ink ink = Ink::kPaper;
    std::vector<Box> boxes;
};

enum class Anchor { kLeft, kCentre, kRight };

/// One line of UTF-8; what is not valid in it is shown as replaced.
struct Text {
    std::int32_t x = 0; ///< of the anchor
    std::int32_t baseline = 0;
    Anchor anchor = Anchor::kLeft;
    std::string text;
};

using Shape = std::variant<Boxes, Text>;

class Drawing {
public:
    /// All text is `textScale` times as large as its usual size, 11 pixels.
    Drawing(std::int32_t width, std::int32_t height, std::int32_t textScale)
        : width_(width), height_(height), textScale_(textScale) {}

    std::int32_t Width() const { return width_; }
    std::int32_t Height() const { return height_; }
    std::int32_t TextScale() const { return textScale_; }

    /// Later shapes lie on earlier ones. Boxes without an area are left out.
    void Add(Boxes boxes);
    void Add(Ink ink, const Box& box) { Add(Boxes{ink, {box}}); }
    void Add(Text text) { shapes_.emplace_back(std::move(text)); }
    const std::vector<Shape>& Shapes() const { return shapes_; }

private:
    std::int32_t width_;
    std::int32_t height_;
    std::int32_t textScale_;
    std::vector<Shape> shapes_;
};

/// The characters of UTF-8 text; U+FFFD for what is none, or nothing that can be shown.
std::u32string Characters(std::string_view utf8);

/// Takes the next bytes of a picture that is being written; what it throws ends the writing.
using WriteBytes = std::function<void(std::string_view bytes)>;

} // namespace mpatool
