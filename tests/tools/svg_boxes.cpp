#include "tools/svg_boxes.h"

#include <cstdio>

namespace test {

namespace {

/// What stands between `begin` and `end`, everywhere.
std::vector<std::string> Between(const std::string& text, const std::string& begin, const std::string& end) {
    std::vector<std::string> found;
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at)) {
        at += begin.size();
        found.push_back(text.substr(at, text.find(end, at) - at));
    }
    return found;
}

} // namespace

std::vector<mpatool::Box> BoxesOf(const mpatool::Drawing& drawing, mpatool::Ink ink) {
    std::vector<mpatool::Box> found;
    for (const mpatool::Shape& shape : drawing.Shapes()) {
        const auto* boxes = std::get_if<mpatool::Boxes>(&shape);
        if (boxes != nullptr && boxes->ink == ink)
            found.insert(found.end(), boxes->boxes.begin(), boxes->boxes.end());
    }
    return found;
}

std::vector<mpatool::Box> BoxesOf(const std::string& svg, mpatool::Ink ink) {
    std::vector<mpatool::Box> found;
    for (const std::string& path :
         Between(svg, std::string("<path class=\"") + mpatool::NameOf(ink) + "\"", "/>"))
        for (const std::string& text : Between(path, "M", "z")) {
            mpatool::Box box;
            if (std::sscanf(text.c_str(), "%d %dh%dv%d", &box.left, &box.top, &box.width, &box.height) == 4)
                found.push_back(box);
        }
    return found;
}

std::vector<std::string> TextsOf(const std::string& svg) {
    std::vector<std::string> texts;
    for (const std::string& text : Between(svg, "<text ", "</text>"))
        texts.push_back(text.substr(text.find('>') + 1));
    return texts;
}

} // namespace test
