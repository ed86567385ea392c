#include "mpatool/progress_bar.h"

#include "mpatool/time_parse.h"
#include "os/console.h"

#include <algorithm>
#include <cstdio>

namespace mpatool {

namespace {

constexpr int kDefaultColumns = 80;
constexpr int kWidestBar = 40;
constexpr int kNarrowestBar = 10;
constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

double Fraction(const Progress& progress) {
    const double fraction = static_cast<double>(progress.doneSamples) /
                            static_cast<double>(std::max<std::int64_t>(progress.totalSamples, 1));
    return std::clamp(fraction, 0.0, 1.0);
}

double Seconds(std::int64_t samples, std::uint32_t sampleRate) {
    return sampleRate != 0 ? static_cast<double>(samples) / sampleRate : 0;
}

std::string Figures(const Progress& progress) {
    const double done = Seconds(progress.doneSamples, progress.sampleRate);
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3d%%", static_cast<int>(Fraction(progress) * 100));
    std::string text = percent;
    text += "  " + FormatWholeSeconds(done) + " / ";
    text += FormatWholeSeconds(Seconds(progress.totalSamples, progress.sampleRate));
    if (progress.elapsedSeconds >= 0.001) {
        char speed[48];
        const double factor = done / progress.elapsedSeconds;
        std::snprintf(speed, sizeof speed, factor < 10 ? "  %.1fx" : "  %.0fx", factor);
        text += speed;
    }
    return text;
}

std::string Bar(double fraction, int width) {
    const auto filled = static_cast<std::size_t>(fraction * width);
    std::string bar(filled, '=');
    if (filled < static_cast<std::size_t>(width))
        bar += '>';
    bar.resize(static_cast<std::size_t>(width), ' ');
    return "[" + bar + "]  ";
}

} // namespace

std::string FormatProgress(const Progress& progress, int columns) {
    const std::string figures = Figures(progress);
    constexpr int kBarFrame = 4; // brackets and two blanks
    const int width = std::min(columns - kBarFrame - static_cast<int>(figures.size()), kWidestBar);
    const std::string line = width >= kNarrowestBar ? Bar(Fraction(progress), width) + figures : figures;
    return line.substr(0, static_cast<std::size_t>(std::max(columns, 0)));
}

ProgressBar::ProgressBar(std::int64_t totalSamples, std::uint32_t sampleRate)
    : enabled_(os::IsErrorTerminal()), progress_{0, totalSamples, sampleRate, 0}, started_(Clock::now()),
      lastDrawn_(started_) {}

ProgressBar::~ProgressBar() {
    if (drawn_)
        os::WriteErrorText("\n");
}

void ProgressBar::Update(std::int64_t doneSamples) {
    progress_.doneSamples = doneSamples;
    if (!enabled_)
        return;
    const Clock::time_point now = Clock::now();
    if (doneSamples >= progress_.totalSamples || now - lastDrawn_ >= kRedrawInterval)
        Draw(now);
}

void ProgressBar::Draw(Clock::time_point now) {
    progress_.elapsedSeconds = std::chrono::duration<double>(now - started_).count();
    const int columns = os::ErrorTerminalColumns();
    // One column stays free: a full line would wrap.
    const int usable = (columns > 0 ? columns : kDefaultColumns) - 1;
    std::string line = FormatProgress(progress_, usable);
    line.resize(static_cast<std::size_t>(std::max(usable, 0)), ' ');
    os::WriteErrorText("\r" + line);
    drawn_ = true;
    lastDrawn_ = now;
}

} // namespace mpatool
