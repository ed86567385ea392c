#include "mpatool/command_line/completions.h"

#include <algorithm>

namespace mpatool {

namespace {

std::string Joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : separator) + word;
    return text;
}

std::vector<std::string> Flags(const CommandText& command) {
    std::vector<std::string> flags;
    for (const OptionText& option : command.options)
        flags.insert(flags.end(), option.flags.begin(), option.flags.end());
    return flags;
}

std::vector<std::string> Names(const std::vector<CommandText>& commands) {
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const CommandText& command : commands)
        names.push_back(command.name);
    return names;
}

/// The command with the options of the program that may stand behind it, too.
CommandText WithSharedOptions(const CommandText& command, const CommandText& program) {
    CommandText all = command;
    for (const OptionText& option : program.options) {
        if (!option.value.empty())
            all.options.push_back(option);
    }
    return all;
}

bool TakesFiles(const CommandText& command) {
    return std::ranges::any_of(command.options,
                               [](const OptionText& option) { return option.flags.empty(); });
}

std::string BashReply(const std::string& what) {
    return "mapfile -t COMPREPLY < <(compgen " + what + " -- \"$current\")";
}

/// What can follow the options of `command` that take a value; an empty name: before any command.
std::string BashValues(const CommandText& command, const std::string& name) {
    std::string text;
    for (const OptionText& option : command.options) {
        if (option.flags.empty() || option.value.empty())
            continue;
        std::vector<std::string> cases;
        for (const std::string& flag : option.flags)
            cases.push_back(std::string(name).append(":").append(flag));
        text += "        " + Joined(cases, "|") + ") ";
        if (!option.choices.empty())
            text += BashReply("-W '" + Joined(option.choices, " ") + "'");
        else
            text += option.TakesPath() ? BashReply("-f") : "COMPREPLY=()";
        text += "; return ;;\n";
    }
    return text;
}

constexpr const char* kBashStart = R"(# bash completion of mpatool
_mpatool() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command= word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
)";

/// Within single quotes, in a place where zsh gives brackets and colons a meaning.
std::string ZshText(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '\'') {
            escaped += "'\\''";
            continue;
        }
        if (character == '[' || character == ']' || character == ':' || character == '\\')
            escaped += '\\';
        escaped += character;
    }
    return escaped;
}

/// An argument for _arguments.
std::string ZshSpec(const OptionText& option) {
    if (option.flags.empty())
        return std::string("'") + (option.isRepeated ? "*" : "") + ":" + ZshText(option.value) + ":_files'";
    std::string text;
    if (option.flags.size() == 1)
        text = "'" + option.flags[0];
    else
        text = "'(" + Joined(option.flags, " ") + ")'{" + Joined(option.flags, ",") + "}'";
    text += "[" + ZshText(option.description) + "]";
    if (!option.value.empty()) {
        text += ":" + ZshText(option.value) + ":";
        if (!option.choices.empty())
            text += "(" + Joined(option.choices, " ") + ")";
        else if (option.TakesPath())
            text += "_files";
    }
    return text + "'";
}

std::string ZshArguments(const CommandText& command, const std::string& indent) {
    std::string text;
    for (const OptionText& option : command.options)
        text += " \\\n" + indent + ZshSpec(option);
    return text;
}

} // namespace

std::string BashCompletion(const CommandText& program) {
    const std::string names = Joined(Names(program.commands), "|");
    std::string text = kBashStart;
    text += "        " + names + ") command=$word; break ;;\n        esac\n    done\n";
    text += "    case $command:$previous in\n" + BashValues(program, "");
    for (const CommandText& command : program.commands)
        text += BashValues(WithSharedOptions(command, program), command.name);
    text += "    esac\n    case $command:$current in\n";
    for (const CommandText& command : program.commands) {
        text += "        " + command.name + ":-*) " +
                BashReply("-W '" + Joined(Flags(WithSharedOptions(command, program)), " ") + "'") + " ;;\n";
        if (!TakesFiles(command))
            text += "        " + command.name + ":*) COMPREPLY=() ;;\n";
    }
    text +=
        "        :*) " +
        BashReply("-W '" + Joined(Names(program.commands), " ") + " " + Joined(Flags(program), " ") + "'") +
        " ;;\n";
    text += "        *) " + BashReply("-f") + " ;;\n    esac\n}\n";
    return text + "complete -o filenames -F _mpatool mpatool\n";
}

std::string ZshCompletion(const CommandText& program) {
    std::string text = "#compdef mpatool\n_mpatool() {\n    local context state state_descr line\n"
                       "    typeset -A opt_args\n    local -a commands\n    commands=(\n";
    for (const CommandText& command : program.commands)
        text += "        '" + command.name + ":" + ZshText(command.description) + "'\n";
    text += "    )\n    _arguments -C" + ZshArguments(program, "        ") +
            " \\\n        '1:command:->command' \\\n        '*::argument:->argument'\n    case $state in\n"
            "    command) _describe command commands ;;\n    argument)\n        case $words[1] in\n";
    for (const CommandText& command : program.commands)
        text += "        " + command.name + ") _arguments" +
                ZshArguments(WithSharedOptions(command, program), "            ") + " ;;\n";
    return text + "        esac ;;\n    esac\n}\n_mpatool \"$@\"\n";
}

} // namespace mpatool
