/// What --help tells, in parts, for other forms of it.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace mpatool {

/// An option, or an argument without a name of its own.
struct OptionText {
    std::vector<std::string> flags; ///< "-o", "--output"; none: an argument
    std::string value;              ///< "OUT", of an argument "FILE"; empty: the option takes no value
    std::string description;
    std::vector<std::string> choices; ///< when the value is one of these
    bool isRequired = false;
    bool isRepeated = false;

    /// The value is the path of a file.
    bool TakesPath() const { return flags.empty() || value == "PATH" || value == "OUT"; }
};

struct CommandText {
    std::string name;
    std::string description;
    std::string footer;
    std::vector<OptionText> options;
    std::vector<CommandText> commands;
};

/// Without what --help hides.
CommandText TextsOf(const CLI::App& app);

} // namespace mpatool
