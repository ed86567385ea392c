/// The progress bar of decoding.
#pragma once

#include "mpatool/output/progress_line.h"

#include <cstdint>
#include <string>

namespace mpatool {

/// How far a run is.
struct Progress {
    std::int64_t doneSamples = 0;
    std::int64_t totalSamples = 0; ///< greater than 0
    std::uint32_t sampleRate = 0;  ///< Hz
    double elapsedSeconds = 0;
};

/// One line of at most `columns` characters:
/// "[=====>    ]  52%  1:02 / 2:00  123x". The speed, in times real time, comes with the first measurable
/// moment.
std::string FormatProgress(const Progress& progress, int columns);

class ProgressBar {
public:
    ProgressBar(std::int64_t totalSamples, std::uint32_t sampleRate)
        : progress_{0, totalSamples, sampleRate, 0} {}

    /// Says how many samples are done; draws when the last drawing is old enough.
    void Update(std::int64_t doneSamples);

private:
    ProgressLine line_;
    Progress progress_;
};

} // namespace mpatool
