#include "mpatool/output/progress_line.h"

#include "os/console.h"

#include <algorithm>

namespace mpatool {

namespace {

constexpr int kDefaultColumns = 80;
constexpr int kWidestBar = 40;
constexpr int kNarrowestBar = 10;
constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

std::string Bar(double fraction, int width) {
    const auto filled = static_cast<std::size_t>(fraction * width);
    std::string bar(filled, '=');
    if (filled < static_cast<std::size_t>(width))
        bar += '>';
    bar.resize(static_cast<std::size_t>(width), ' ');
    return "[" + bar + "]  ";
}

} // namespace

std::string WithBar(double fraction, const std::string& figures, int columns) {
    constexpr int kBarFrame = 4; // brackets and two blanks
    const int width = std::min(columns - kBarFrame - static_cast<int>(figures.size()), kWidestBar);
    const std::string line = width >= kNarrowestBar ? Bar(fraction, width) + figures : figures;
    return line.substr(0, static_cast<std::size_t>(std::max(columns, 0)));
}

ProgressLine::ProgressLine() : shown_(os::IsErrorTerminal()), started_(Clock::now()), lastDrawn_(started_) {}

ProgressLine::~ProgressLine() {
    if (drawn_)
        os::WriteErrorText("\n");
}

bool ProgressLine::IsDue() const {
    return shown_ && Clock::now() - lastDrawn_ >= kRedrawInterval;
}

double ProgressLine::ElapsedSeconds() const {
    return std::chrono::duration<double>(Clock::now() - started_).count();
}

int ProgressLine::Columns() const {
    const int columns = os::ErrorTerminalColumns();
    // One column stays free: a full line would wrap.
    return std::max((columns > 0 ? columns : kDefaultColumns) - 1, 0);
}

void ProgressLine::Draw(std::string line) {
    if (!shown_)
        return;
    line.resize(static_cast<std::size_t>(Columns()), ' ');
    os::WriteErrorText("\r" + line);
    drawn_ = true;
    lastDrawn_ = Clock::now();
}

void ProgressLine::Clear() {
    if (!drawn_)
        return;
    os::WriteErrorText("\r" + std::string(static_cast<std::size_t>(Columns()), ' ') + "\r");
    drawn_ = false;
}

} // namespace mpatool
