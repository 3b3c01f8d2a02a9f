#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>

/// A line on a terminal that shows how far the work is, redrawn in place, at most once a percent.
class ProgressBar {
public:
    /// @param out null for none
    /// @param total of what Advance adds up to; without it the bar is not drawn
    ProgressBar(std::ostream* out, std::optional<std::int64_t> total);

    /// Wipes the line.
    ~ProgressBar();

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Advance(std::int64_t amount);

private:
    std::ostream* mOut;
    std::int64_t mTotal;
    std::int64_t mDone = 0;
    std::int64_t mPercent = -1;
};
