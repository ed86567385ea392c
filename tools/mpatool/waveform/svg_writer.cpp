#include "mpatool/waveform/svg_writer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace mpatool {

namespace {

constexpr int kTextPixels = 11;

template <typename... Values>
std::string Formatted(const char* format, Values... values) {
    std::array<char, 512> text{};
    const int length = std::snprintf(text.data(), text.size(), format, values...);
    return std::string(text.data(), std::min(static_cast<std::size_t>(std::max(length, 0)), text.size() - 1));
}

std::string Escaped(std::string_view utf8) {
    std::string text;
    for (const char32_t character : Characters(utf8)) {
        const bool isPlain = character < 0x7F && character != '<' && character != '>' && character != '&';
        if (isPlain)
            text += static_cast<char>(character);
        else
            text += Formatted("&#x%lX;", static_cast<unsigned long>(character));
    }
    return text;
}

std::string FillOf(Ink ink) {
    const Color color = ColorOf(ink);
    return Formatted("#%02x%02x%02x", unsigned{color.red}, unsigned{color.green}, unsigned{color.blue});
}

class ShapeWriter {
public:
    explicit ShapeWriter(const WriteBytes& write) : write_(write) {}

    void operator()(const Boxes& boxes) const {
        constexpr std::size_t kPieceBytes = 64 * 1024;
        std::string text =
            Formatted("<path class=\"%s\" fill=\"%s\" d=\"", NameOf(boxes.ink), FillOf(boxes.ink).c_str());
        for (const Box& box : boxes.boxes) {
            text += Formatted("M%d %dh%dv%dh-%dz", box.left, box.top, box.width, box.height, box.width);
            if (text.size() >= kPieceBytes) {
                write_(text);
                text.clear();
            }
        }
        write_(text + "\"/>\n");
    }

    void operator()(const Text& text) const {
        constexpr std::array kAnchors = {"start", "middle", "end"};
        const std::string place =
            Formatted("<text x=\"%d\" y=\"%d\" text-anchor=\"%s\">", text.x, text.baseline,
                      kAnchors.at(static_cast<std::size_t>(text.anchor)));
        write_(place + Escaped(text.text) + "</text>\n");
    }

private:
    const WriteBytes& write_;
};

} // namespace

void WriteSvg(const Drawing& drawing, std::string_view title, const WriteBytes& write) {
    write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    write(Formatted(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\" "
        "font-family=\"DejaVu Sans Mono, Consolas, monospace\" font-size=\"%d\" fill=\"%s\" "
        "shape-rendering=\"crispEdges\">\n",
        drawing.Width(), drawing.Height(), drawing.Width(), drawing.Height(),
        kTextPixels * drawing.TextScale(), FillOf(Ink::kText).c_str()));
    write("<title>" + Escaped(title) + "</title>\n");
    write(Formatted("<rect width=\"100%%\" height=\"100%%\" fill=\"%s\"/>\n", FillOf(Ink::kPaper).c_str()));
    const ShapeWriter writer(write);
    for (const Shape& shape : drawing.Shapes())
        std::visit(writer, shape);
    write("</svg>\n");
}

} // namespace mpatool
