#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

/// Where progress is shown.
struct ProgressOutput {
    std::ostream* out = nullptr;       ///< null for nowhere
    int (*terminalWidth)() = nullptr;  ///< columns; null if it is no terminal
    std::string label;                 ///< of lines elsewhere
    /// Takes the share that is done, 0..1, instead; null for a display of its own.
    std::function<void(double share)> report = {};
    std::function<std::string()> prefix = {};  ///< of the bar; null for none
};

/// On a terminal, a progress bar with the time left, redrawn in place when it changes. Elsewhere a
/// line every 10 percent, but none within 2 seconds of the one before it or of the start.
class ProgressBar {
public:
    using Seconds = std::function<double()>;

    /// @param total what Advance adds up to; without it nothing is shown
    /// @param clock seconds from any start; the system's by default
    ProgressBar(ProgressOutput output, std::optional<std::int64_t> total,
                Seconds clock = SystemClock);

    /// Clears the bar.
    ~ProgressBar();

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Advance(std::int64_t amount);

private:
    static double SystemClock();
    std::string TimeLeft(double now) const;
    void Draw(double now);
    void PrintLine(double now);

    ProgressOutput mOutput;
    Seconds mClock;
    std::int64_t mTotal;
    std::int64_t mDone = 0;
    std::int64_t mPercent = -1;  ///< shown
    std::string mPrefix;         ///< shown
    double mStart;
    double mShown;           ///< time of the last line or bar
    std::size_t mDrawn = 0;  ///< columns
};
