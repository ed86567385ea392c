/// Lines that the log has written.
#pragma once

#include <cctype>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// True when `text` is like `form`, where each 0 stands for any digit.
inline bool HasForm(std::string_view text, std::string_view form) {
    if (text.size() != form.size())
        return false;
    for (std::size_t index = 0; index < form.size(); ++index) {
        const bool digit = std::isdigit(static_cast<unsigned char>(text[index])) != 0;
        if (form[index] == '0' ? !digit : text[index] != form[index])
            return false;
    }
    return true;
}

/// The lines of a log without their times; a line that does not begin with one is given as "no time: ...".
inline std::vector<std::string> LogLines(const std::string& text) {
    constexpr std::string_view kTime = "0000-00-00 00:00:00.000 ";
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        const bool timed = HasForm(std::string_view(line).substr(0, kTime.size()), kTime);
        lines.push_back(timed ? line.substr(kTime.size()) : "no time: " + line);
    }
    return lines;
}

} // namespace test
