#include "reader/index_mutations.h"

#include "index/index_format.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <span>

namespace test {

namespace {

using trnmpa::kIndexEntryBytes;
using trnmpa::kIndexHeaderBytes;

constexpr std::uint32_t kValues[] = {0,      1,      2,      3,          4,          9,          16,
                                     36,     37,     38,     255,        256,        576,        1152,
                                     0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};

/// Where the header's fields begin, and how wide they are.
struct Field {
    std::size_t offset;
    std::size_t bytes;
};
constexpr Field kHeaderFields[] = {{0, 4},  {4, 4},  {8, 1},  {9, 1},  {10, 2},
                                   {12, 4}, {16, 4}, {20, 2}, {22, 2}, {24, 4}};

class Mutator {
public:
    Mutator(const Bytes& index, std::uint32_t mediaBytes, std::uint64_t seed)
        : random_(seed), mediaBytes_(mediaBytes), mutation_{index, {}} {}

    Mutation Take() { return std::move(mutation_); }

    std::size_t Below(std::size_t limit) { return limit > 0 ? random_() % limit : 0; }

    void Change() {
        switch (Below(8)) {
        case 0:
            return FlipBits();
        case 1:
            return SetByte();
        case 2:
            return SetHeaderField();
        case 3:
        case 4:
            return SetEntryField();
        case 5:
            return MoveEntry();
        case 6:
            return Cut();
        default:
            return Extend();
        }
    }

private:
    Bytes& Index() { return mutation_.index; }
    std::size_t Entries() {
        return Index().size() < kIndexHeaderBytes ? 0
                                                  : (Index().size() - kIndexHeaderBytes) / kIndexEntryBytes;
    }
    void Note(const std::string& what) { mutation_.description += " " + what; }

    void FlipBits() {
        if (Index().empty())
            return;
        for (std::size_t left = 1 + Below(8); left > 0; --left) {
            const std::size_t at = Below(Index().size());
            Index()[at] = static_cast<std::uint8_t>(Index()[at] ^ 1u << Below(8));
            Note("flip@" + std::to_string(at));
        }
    }

    void SetByte() {
        if (Index().empty())
            return;
        const std::size_t at = Below(Index().size());
        constexpr std::uint8_t kBytes[] = {0, 1, 2, 0x7F, 0x80, 0xFF};
        Index()[at] = Below(2) == 0 ? kBytes[Below(std::size(kBytes))] : static_cast<std::uint8_t>(random_());
        Note("byte@" + std::to_string(at));
    }

    void SetField(const Field& field, std::uint32_t value) {
        for (std::size_t i = 0; i < field.bytes && field.offset + i < Index().size(); ++i)
            Index()[field.offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
        Note("field@" + std::to_string(field.offset) + "=" + std::to_string(value));
    }

    void SetHeaderField() { SetField(kHeaderFields[Below(std::size(kHeaderFields))], DrawValue()); }

    void SetEntryField() {
        if (Entries() > 0)
            SetField({kIndexHeaderBytes + kIndexEntryBytes * Below(Entries()) + 4 * Below(2), 4},
                     DrawValue());
    }

    /// A number that matters somewhere, a place in or at the end of the media file, or any number.
    std::uint32_t DrawValue() {
        switch (Below(4)) {
        case 0:
            return static_cast<std::uint32_t>(mediaBytes_ + Below(9) - 4);
        case 1:
            return static_cast<std::uint32_t>(Below(mediaBytes_));
        case 2:
            return static_cast<std::uint32_t>(random_());
        default:
            return kValues[Below(std::size(kValues))];
        }
    }

    /// Swaps two entries or copies one over another.
    void MoveEntry() {
        if (Entries() < 2)
            return;
        const auto at = [this](std::size_t entry) {
            return Index().begin() +
                   static_cast<std::ptrdiff_t>(kIndexHeaderBytes + kIndexEntryBytes * entry);
        };
        const std::size_t from = Below(Entries());
        const std::size_t to = Below(Entries());
        const bool isSwap = Below(2) == 0;
        Note((isSwap ? "swap@" : "copy@") + std::to_string(from) + "," + std::to_string(to));
        if (from == to)
            return;
        if (isSwap)
            std::swap_ranges(at(from), at(from) + kIndexEntryBytes, at(to));
        else
            std::copy_n(at(from), kIndexEntryBytes, at(to));
    }

    void Cut() {
        Index().resize(Below(Index().size() + 1));
        Note("cut to " + std::to_string(Index().size()));
    }

    void Extend() {
        const std::size_t added = 1 + Below(64);
        std::generate_n(std::back_inserter(Index()), added,
                        [this] { return static_cast<std::uint8_t>(random_()); });
        Note("more by " + std::to_string(added));
    }

    std::mt19937_64 random_;
    std::uint32_t mediaBytes_;
    Mutation mutation_;
};

} // namespace

Mutation Mutate(const Bytes& index, std::uint32_t mediaBytes, std::uint64_t seed) {
    Mutator mutator(index, mediaBytes, seed);
    const std::size_t changes = mutator.Below(2) == 0 ? 1 : 1 + mutator.Below(3);
    for (std::size_t i = 0; i < changes; ++i)
        mutator.Change();
    return mutator.Take();
}

Soundness Compare(const Bytes& whole, const Bytes& mutated) {
    const auto same = [&](std::size_t from, std::size_t to) {
        return mutated.size() >= to && std::equal(whole.begin() + static_cast<std::ptrdiff_t>(from),
                                                  whole.begin() + static_cast<std::ptrdiff_t>(to),
                                                  mutated.begin() + static_cast<std::ptrdiff_t>(from));
    };
    Soundness soundness;
    // No reader uses the size of the media file.
    soundness.header = same(0, 4) && same(8, kIndexHeaderBytes);
    std::size_t at = kIndexHeaderBytes;
    while (at < whole.size() && same(at, at + kIndexEntryBytes)) {
        ++soundness.entries;
        at += kIndexEntryBytes;
    }
    return soundness;
}

} // namespace test
