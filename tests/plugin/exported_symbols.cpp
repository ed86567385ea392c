#include "plugin/exported_symbols.h"

#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace test {

namespace {

/// Checked little-endian access.
class Image {
public:
    explicit Image(const Bytes& bytes) : bytes_(bytes) {}

    std::uint64_t Number(std::uint64_t offset, int width) const {
        std::uint64_t value = 0;
        for (int i = width - 1; i >= 0; --i)
            value = value << 8 | bytes_.at(static_cast<std::size_t>(offset) + static_cast<std::size_t>(i));
        return value;
    }
    std::uint64_t U16(std::uint64_t offset) const { return Number(offset, 2); }
    std::uint64_t U32(std::uint64_t offset) const { return Number(offset, 4); }
    std::uint64_t U64(std::uint64_t offset) const { return Number(offset, 8); }

    std::string Text(std::uint64_t offset) const {
        std::string text;
        for (auto i = static_cast<std::size_t>(offset); bytes_.at(i) != 0; ++i)
            text += static_cast<char>(bytes_[i]);
        return text;
    }

private:
    const Bytes& bytes_;
};

struct ElfSection {
    std::uint64_t type;
    std::uint64_t offset;
    std::uint64_t size;
    std::uint64_t link;
};

std::vector<ElfSection> ElfSections(const Image& image) {
    const std::uint64_t table = image.U64(0x28);
    const std::uint64_t entryBytes = image.U16(0x3A);
    std::vector<ElfSection> sections;
    for (std::uint64_t i = 0; i < image.U16(0x3C); ++i) {
        const std::uint64_t entry = table + i * entryBytes;
        sections.push_back({image.U32(entry + 4), image.U64(entry + 0x18), image.U64(entry + 0x20),
                            image.U32(entry + 0x28)});
    }
    return sections;
}

void ReadElfSymbols(const Image& image, const ElfSection& symbols, const ElfSection& names,
                    LibraryDescription& library) {
    constexpr std::uint64_t kSymbolBytes = 24;
    constexpr std::uint64_t kLocalBinding = 0;
    constexpr std::uint64_t kUndefined = 0;
    for (std::uint64_t entry = symbols.offset; entry < symbols.offset + symbols.size; entry += kSymbolBytes) {
        if (image.Number(entry + 4, 1) >> 4 == kLocalBinding)
            continue;
        const std::string name = image.Text(names.offset + image.U32(entry));
        (image.U16(entry + 6) == kUndefined ? library.imports : library.exports).insert(name);
    }
}

void ReadElfName(const Image& image, const ElfSection& dynamic, const ElfSection& names,
                 LibraryDescription& library) {
    constexpr std::uint64_t kEntryBytes = 16;
    constexpr std::uint64_t kSoname = 14;
    for (std::uint64_t entry = dynamic.offset; entry < dynamic.offset + dynamic.size; entry += kEntryBytes)
        if (image.U64(entry) == kSoname)
            library.name = image.Text(names.offset + image.U64(entry + 8));
}

LibraryDescription DescribeElf(const Image& image) {
    constexpr std::uint64_t kDynamic = 6;
    constexpr std::uint64_t kDynamicSymbols = 11;
    if (image.Number(4, 1) != 2 || image.Number(5, 1) != 1)
        throw std::runtime_error("not a 64-bit little-endian file");
    LibraryDescription library;
    const std::vector<ElfSection> sections = ElfSections(image);
    for (const ElfSection& section : sections) {
        if (section.type == kDynamicSymbols)
            ReadElfSymbols(image, section, sections.at(section.link), library);
        if (section.type == kDynamic)
            ReadElfName(image, section, sections.at(section.link), library);
    }
    return library;
}

/// File offset of an address in the loaded image.
std::uint64_t PeOffset(const Image& image, std::uint64_t header, std::uint64_t address) {
    constexpr std::uint64_t kSectionBytes = 40;
    const std::uint64_t sections = header + 24 + image.U16(header + 20);
    for (std::uint64_t i = 0; i < image.U16(header + 6); ++i) {
        const std::uint64_t section = sections + i * kSectionBytes;
        const std::uint64_t start = image.U32(section + 12);
        if (address >= start && address - start < image.U32(section + 16))
            return image.U32(section + 20) + (address - start);
    }
    throw std::runtime_error("an address outside all sections");
}

LibraryDescription DescribePe(const Image& image) {
    constexpr std::uint64_t kSignature = 0x00004550;
    constexpr std::uint64_t k64Bit = 0x20B;
    const std::uint64_t header = image.U32(0x3C);
    if (image.U32(header) != kSignature || image.U16(header + 24) != k64Bit)
        throw std::runtime_error("not a 64-bit PE file");
    const auto at = [&](std::uint64_t address) { return PeOffset(image, header, address); };
    const std::uint64_t directory = at(image.U32(header + 24 + 112));
    const std::uint64_t functions = image.U32(directory + 20);
    const std::uint64_t names = image.U32(directory + 24);
    LibraryDescription library;
    library.name = image.Text(at(image.U32(directory + 12)));
    library.unnamedExports = static_cast<std::size_t>(functions - names);
    const std::uint64_t table = at(image.U32(directory + 32));
    for (std::uint64_t i = 0; i < names; ++i)
        library.exports.insert(image.Text(at(image.U32(table + 4 * i))));
    return library;
}

} // namespace

LibraryDescription DescribeLibrary(const Bytes& file) {
    const Image image(file);
    if (image.U32(0) == 0x464C457F)
        return DescribeElf(image);
    if (image.U16(0) == 0x5A4D)
        return DescribePe(image);
    throw std::runtime_error("neither an ELF nor a PE file");
}

} // namespace test
