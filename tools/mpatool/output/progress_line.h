/// A line on standard error that shows how far a run is.
#pragma once

#include <chrono>
#include <string>

namespace mpatool {

/// "[=====>    ]  FIGURES", at most `columns` characters; the bar goes where there is no room for it.
/// `fraction` is 0 to 1.
std::string WithBar(double fraction, const std::string& figures, int columns);

/// Draws lines over one another. Nothing is written when standard error is no terminal.
class ProgressLine {
public:
    ProgressLine();
    /// Leaves the cursor on a line of its own.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    bool IsShown() const { return shown_; }
    /// The last drawing is old enough for another one.
    bool IsDue() const;
    double ElapsedSeconds() const;

    /// Characters that a line may have.
    int Columns() const;
    void Draw(std::string line);
    /// Takes the line away, for other text in its place.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    bool shown_;
    bool drawn_ = false;
    Clock::time_point started_;
    Clock::time_point lastDrawn_;
};

} // namespace mpatool
