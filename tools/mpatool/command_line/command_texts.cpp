#include "mpatool/command_line/command_texts.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace mpatool {

namespace {

bool IsWord(const std::string& text) {
    return !text.empty() && std::ranges::all_of(text, [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
    });
}

/// Descriptions that are nothing but choices name them: "plain, sse2, avx2 or all". Others give none.
std::vector<std::string> ChoicesIn(const std::string& description) {
    constexpr std::string_view kOr = " or ";
    std::string text = description;
    const std::size_t last = text.find(kOr);
    if (last == std::string::npos)
        return {};
    text.replace(last, kOr.size(), ", ");
    std::vector<std::string> choices;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(", ", begin), text.size());
        choices.push_back(text.substr(begin, end - begin));
        begin = end + 2;
    }
    return std::ranges::all_of(choices, IsWord) ? choices : std::vector<std::string>();
}

OptionText TextOf(const CLI::Option& option) {
    OptionText text;
    for (const std::string& name : option.get_snames())
        text.flags.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        text.flags.push_back("--" + name);
    text.value = option.get_positional() ? option.get_name() : option.get_type_name();
    if (option.get_items_expected_max() == 0)
        text.value.clear();
    text.description = option.get_description();
    if (!text.value.empty())
        text.choices = ChoicesIn(text.description);
    text.isRequired = option.get_required();
    text.isRepeated = option.get_items_expected_max() > 1;
    return text;
}

} // namespace

CommandText TextsOf(const CLI::App& app) {
    CommandText text;
    text.name = app.get_name();
    text.description = app.get_description();
    text.footer = app.get_footer();
    for (const CLI::Option* option : app.get_options())
        if (!option->get_group().empty())
            text.options.push_back(TextOf(*option));
    const auto all = [](const CLI::App*) { return true; };
    for (const CLI::App* command : app.get_subcommands(all))
        text.commands.push_back(TextsOf(*command));
    return text;
}

} // namespace mpatool
