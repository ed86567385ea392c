#include "mpatool/output/progress_bar.h"

#include "mpatool/command_line/time_parse.h"

#include <algorithm>
#include <cstdio>

namespace mpatool {

namespace {

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

} // namespace

std::string FormatProgress(const Progress& progress, int columns) {
    return WithBar(Fraction(progress), Figures(progress), columns);
}

void ProgressBar::Update(std::int64_t doneSamples) {
    progress_.doneSamples = doneSamples;
    if (!line_.IsDue() && !(line_.IsShown() && doneSamples >= progress_.totalSamples))
        return;
    progress_.elapsedSeconds = line_.ElapsedSeconds();
    line_.Draw(FormatProgress(progress_, line_.Columns()));
}

} // namespace mpatool
