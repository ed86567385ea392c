// damage_stream IN OUT SEED [KIND...] [--with OTHER]: damages a file of MPEG audio frames and prints what it
// then consists of. KINDs: flips, cut, splice, junk, crc, missing; all without any.

#include "support/damage/damage.h"
#include "support/damage/truth_text.h"

#include <exception>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Arguments {
    std::string in;
    std::string out;
    std::string other; ///< empty: the input itself
    std::uint64_t seed = 0;
    std::vector<test::DamageKind> kinds;
};

Arguments Parse(const std::vector<std::string>& texts) {
    if (texts.size() < 3)
        throw std::invalid_argument("damage_stream IN OUT SEED [KIND...] [--with OTHER]");
    Arguments arguments{texts[0], texts[1], {}, std::stoull(texts[2]), {}};
    for (std::size_t i = 3; i < texts.size(); ++i) {
        if (texts[i] == "--with" && i + 1 < texts.size())
            arguments.other = texts[++i];
        else
            arguments.kinds.push_back(test::DamageNamed(texts[i]));
    }
    if (arguments.kinds.empty())
        arguments.kinds.assign(std::begin(test::kDamageKinds), std::end(test::kDamageKinds));
    return arguments;
}

test::CleanStream Load(const std::string& path) {
    return test::FirstFramesOf(test::ReadFile(path), std::numeric_limits<std::size_t>::max());
}

} // namespace

int main(int count, char** values) {
    try {
        const Arguments arguments = Parse({values + 1, values + count});
        const test::CleanStream stream = Load(arguments.in);
        const test::CleanStream other = arguments.other.empty() ? stream : Load(arguments.other);
        const test::DamagedFile file = Damaged(stream, other, arguments.kinds, arguments.seed);
        test::WriteFile(arguments.out, file.Content());
        std::cout << test::TruthText(file);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "damage_stream: " << error.what() << "\n";
        return 1;
    }
}
