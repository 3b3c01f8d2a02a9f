#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>

/// A progress bar on a terminal, redrawn in place at most once a percent.
class ProgressBar {
public:
    /// @param out null for none
    /// @param total what Advance adds up to; without it no bar is drawn
    ProgressBar(std::ostream* out, std::optional<std::int64_t> total);

    /// Clears the line.
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
