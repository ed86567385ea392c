#include "mpatool/command_line/man_page.h"

#include <algorithm>
#include <sstream>

namespace mpatool {

namespace {

/// Hyphens as they are typed, nothing taken for a request.
std::string Escaped(const std::string& text) {
    std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char character : text) {
        if (character == '-')
            escaped += "\\-";
        else if (character == '\\')
            escaped += "\\e";
        else
            escaped += character;
    }
    return escaped;
}

std::string Bold(const std::string& text) {
    return "\\fB" + Escaped(text) + "\\fR";
}

std::string Italic(const std::string& text) {
    return "\\fI" + Escaped(text) + "\\fR";
}

/// "-o, --output OUT".
std::string Heading(const OptionText& option) {
    std::string text;
    for (const std::string& flag : option.flags)
        text += (text.empty() ? "" : ", ") + Bold(flag);
    if (!option.value.empty())
        text += (text.empty() ? "" : " ") + Italic(option.value);
    return text;
}

void AddOption(std::string& page, const OptionText& option) {
    page += ".TP\n" + Heading(option) + "\n" + Escaped(option.description) + "\n";
}

/// "mpatool decode [OPTIONS] FILE".
std::string Synopsis(const CommandText& program, const CommandText& command) {
    std::string text = Bold(program.name) + " " + Bold(command.name) + " [" + Italic("OPTIONS") + "]";
    for (const OptionText& option : command.options) {
        if (!option.isRequired)
            continue;
        text += " " + Heading(option) + (option.isRepeated ? "..." : "");
    }
    return text;
}

/// A line of a help text's table: two blanks, a term, two blanks or more, text. Lines with more blanks in
/// front go on with the text.
void AddTableLine(std::string& page, const std::string& line) {
    const std::size_t start = line.find_first_not_of(' ');
    if (start > 2) {
        page += Escaped(line.substr(start)) + "\n";
        return;
    }
    const std::size_t end = std::min(line.find("  ", start), line.size());
    page += ".TP\n" + Bold(line.substr(start, end - start)) + "\n";
    const std::size_t text = std::min(line.find_first_not_of(' ', end), line.size());
    page += Escaped(line.substr(text)) + "\n";
}

/// Paragraphs, which are filled anew, and tables.
void AddText(std::string& page, const std::string& text) {
    std::istringstream lines(text);
    bool wasTable = false;
    for (std::string line; std::getline(lines, line);) {
        const bool isTable = line.starts_with("  ");
        if (line.empty() || (wasTable && !isTable))
            page += ".PP\n";
        if (isTable)
            AddTableLine(page, line);
        else if (!line.empty())
            page += Escaped(line) + "\n";
        wasTable = isTable;
    }
}

std::string WithoutEnd(const std::string& text, const std::string& end) {
    std::string begin = text.ends_with(end) ? text.substr(0, text.size() - end.size()) : text;
    begin.erase(begin.find_last_not_of('\n') + 1);
    return begin;
}

void AddCommand(std::string& page, const CommandText& command, const std::string& exitStatus) {
    page += ".SS " + Escaped(command.name) + "\n" + Escaped(command.description) + ".\n";
    for (const OptionText& option : command.options) {
        // Told once for all commands.
        if (std::ranges::find(option.flags, "--help") == option.flags.end())
            AddOption(page, option);
    }
    const std::string text = WithoutEnd(command.footer, exitStatus);
    if (text.empty())
        return;
    page += ".PP\n";
    AddText(page, text);
}

} // namespace

std::string ManPage(const CommandText& program, const std::string& version, const std::string& exitStatus) {
    std::string page = ".TH MPATOOL 1 \"\" \"" + Escaped(version) + "\" \"User Commands\"\n";
    page += ".SH NAME\n" + Escaped(program.name) + " \\- read MPEG audio files\n.SH SYNOPSIS\n.nf\n";
    for (const CommandText& command : program.commands)
        page += Synopsis(program, command) + "\n";
    page += ".fi\n.SH DESCRIPTION\n" + Escaped(program.description) + "\n.SH OPTIONS\n";
    for (const OptionText& option : program.options)
        AddOption(page, option);
    page += ".SH COMMANDS\n";
    for (const CommandText& command : program.commands)
        AddCommand(page, command, exitStatus);
    // Its first line is its heading.
    page += ".SH EXIT STATUS\n";
    AddText(page, exitStatus.substr(std::min(exitStatus.find('\n') + 1, exitStatus.size())));
    return page;
}

} // namespace mpatool
