#include "mpatool/waveform/drawing.h"

#include <array>
#include <utility>

namespace mpatool {

namespace {

struct InkKind {
    const char* name;
    Color color;
};

/// In the order of Ink.
constexpr std::array<InkKind, kInks> kKinds = {{
    {"paper", {255, 255, 255}},
    {"panel", {246, 247, 249}},
    {"grid", {218, 222, 228}},
    {"axis", {110, 116, 126}},
    {"text", {40, 44, 52}},
    {"peaks", {86, 180, 233}},
    {"rms", {0, 84, 150}},
    {"full-scale", {213, 94, 0}},
    {"rate-range", {186, 208, 198}},
    {"rate", {0, 110, 80}},
    {"reservoir-range", {234, 216, 196}},
    {"reservoir", {146, 80, 24}},
    {"long", {221, 224, 229}},
    {"start", {237, 177, 32}},
    {"short", {91, 42, 134}},
    {"stop", {44, 160, 137}},
    {"mixed", {20, 20, 24}},
}};

constexpr char32_t kReplacement = 0xFFFD;

struct Lead {
    int following;     ///< bytes
    char32_t value;    ///< the bits that it brings
    char32_t smallest; ///< what fewer bytes could say is not valid
};

/// Nothing that can begin a character gives -1 bytes.
Lead ReadLead(unsigned char byte) {
    if (byte < 0x80)
        return {0, byte, 0};
    if (byte >= 0xC0 && byte < 0xE0)
        return {1, char32_t{byte} & 0x1F, 0x80};
    if (byte >= 0xE0 && byte < 0xF0)
        return {2, char32_t{byte} & 0x0F, 0x800};
    if (byte >= 0xF0 && byte < 0xF8)
        return {3, char32_t{byte} & 0x07, 0x10000};
    return {-1, 0, 0};
}

/// What XML can hold and what has a shape.
bool IsShown(char32_t value) {
    const bool isControl = value < 0x20 || (value >= 0x7F && value < 0xA0);
    const bool isSurrogate = value >= 0xD800 && value < 0xE000;
    const bool isNoCharacter = (value & 0xFFFE) == 0xFFFE || value > 0x10FFFF;
    return !isControl && !isSurrogate && !isNoCharacter;
}

/// Takes a character off the front, or one byte that begins none.
char32_t TakeCharacter(std::string_view& text) {
    const Lead lead = ReadLead(static_cast<unsigned char>(text.front()));
    text.remove_prefix(1);
    if (lead.following < 0 || text.size() < static_cast<std::size_t>(lead.following))
        return kReplacement;
    char32_t value = lead.value;
    for (int i = 0; i < lead.following; ++i) {
        const auto byte = static_cast<unsigned char>(text[static_cast<std::size_t>(i)]);
        if ((byte & 0xC0) != 0x80)
            return kReplacement;
        value = value << 6 | (byte & 0x3Fu);
    }
    text.remove_prefix(static_cast<std::size_t>(lead.following));
    return value >= lead.smallest && IsShown(value) ? value : kReplacement;
}

} // namespace

Color ColorOf(Ink ink) {
    return kKinds[static_cast<std::size_t>(ink)].color;
}

const char* NameOf(Ink ink) {
    return kKinds[static_cast<std::size_t>(ink)].name;
}

void Drawing::Add(Boxes boxes) {
    std::erase_if(boxes.boxes, [](const Box& box) { return box.width <= 0 || box.height <= 0; });
    if (!boxes.boxes.empty())
        shapes_.emplace_back(std::move(boxes));
}

std::u32string Characters(std::string_view utf8) {
    std::u32string characters;
    while (!utf8.empty())
        characters += TakeCharacter(utf8);
    return characters;
}

} // namespace mpatool
