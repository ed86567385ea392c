/// The progress bar of long runs.
#pragma once

#include <chrono>
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
/// moment; the bar goes where there is no room for it.
std::string FormatProgress(const Progress& progress, int columns);

/// Draws the line on standard error, again and again in place. Nothing is written when standard error is no
/// terminal.
class ProgressBar {
public:
    ProgressBar(std::int64_t totalSamples, std::uint32_t sampleRate);
    /// Leaves the cursor on a line of its own.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Says how many samples are done; draws when the last drawing is old enough.
    void Update(std::int64_t doneSamples);

private:
    using Clock = std::chrono::steady_clock;

    void Draw(Clock::time_point now);

    bool enabled_;
    bool drawn_ = false;
    Progress progress_;
    Clock::time_point started_;
    Clock::time_point lastDrawn_;
};

} // namespace mpatool
