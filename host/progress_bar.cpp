#include "host/progress_bar.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <utility>

namespace {

constexpr int kMostCells = 40;
constexpr int kFewestCells = 5;
constexpr double kBeforeEstimate = 1.0;  // s
constexpr double kBetweenLines = 2.0;    // s

}  // namespace

double ProgressBar::SystemClock() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

ProgressBar::ProgressBar(ProgressOutput output, std::optional<std::int64_t> total, Seconds clock)
    : mOutput(std::move(output)), mClock(std::move(clock)), mTotal(total.value_or(0)) {
    if (mTotal <= 0) {
        mOutput.out = nullptr;
        mOutput.report = nullptr;
    }
    mStart = mClock();
    mShown = mStart;
}

ProgressBar::~ProgressBar() {
    if (mDrawn > 0) {
        *mOutput.out << '\r' + std::string(mDrawn, ' ') + '\r' << std::flush;
    }
}

void ProgressBar::Advance(std::int64_t amount) {
    mDone = std::min(mDone + amount, std::max(mTotal, std::int64_t{0}));
    if (mOutput.report) {
        mOutput.report(static_cast<double>(mDone) / static_cast<double>(mTotal));
        return;
    }
    if (mOutput.out == nullptr) {
        return;
    }
    const double now = mClock();
    if (mOutput.terminalWidth != nullptr) {
        Draw(now);
    } else {
        PrintLine(now);
    }
}

std::string ProgressBar::TimeLeft(double now) const {
    const double elapsed = now - mStart;
    if (elapsed < kBeforeEstimate || mDone == 0) {
        return "";
    }
    const double share = static_cast<double>(mTotal - mDone) / static_cast<double>(mDone);
    const long long seconds = std::llround(std::min(elapsed * share, 1e7));
    char text[40];
    if (seconds >= 3600) {
        std::snprintf(text, sizeof(text), "%lld:%02lld:%02lld left", seconds / 3600,
                      seconds / 60 % 60, seconds % 60);
    } else {
        std::snprintf(text, sizeof(text), "%lld:%02lld left", seconds / 60, seconds % 60);
    }
    return text;
}

void ProgressBar::Draw(double now) {
    const std::int64_t percent = mDone * 100 / mTotal;
    const std::string prefix = mOutput.prefix ? mOutput.prefix() : "";
    if (percent == mPercent && prefix == mPrefix && now - mShown < 1.0) {
        return;
    }
    mPercent = percent;
    mPrefix = prefix;
    mShown = now;
    const std::string number = std::to_string(percent);
    const std::string left = TimeLeft(now);
    std::string text = std::string(3 - number.size(), ' ') + number + '%';
    // The last column stays free: some terminals wrap around there.
    const int width = mOutput.terminalWidth() - 1;
    const auto others = static_cast<int>(prefix.size() + text.size());
    const int cells = std::min(kMostCells, width - 7 - others - 10);
    if (cells >= kFewestCells) {
        const auto filled = static_cast<std::size_t>(percent * cells / 100);
        text = prefix + '[' + std::string(filled, '#') +
               std::string(static_cast<std::size_t>(cells) - filled, '.') + "] " + text +
               (left.empty() ? "" : "  " + left);
    }
    text.resize(std::min(text.size(), static_cast<std::size_t>(std::max(width, 0))));
    const std::size_t shorter = mDrawn > text.size() ? mDrawn - text.size() : 0;
    mDrawn = text.size();
    *mOutput.out << '\r' + text + std::string(shorter, ' ') << std::flush;
}

void ProgressBar::PrintLine(double now) {
    const std::int64_t percent = mDone * 10 / mTotal * 10;
    if (percent <= std::max<std::int64_t>(mPercent, 0) || percent == 100 ||
        now - mShown < kBetweenLines) {
        return;
    }
    mPercent = percent;
    mShown = now;
    // In one write: several jobs may share the stream.
    *mOutput.out << mOutput.label + ": " + std::to_string(percent) + " %, " + TimeLeft(now) + "\n"
                 << std::flush;
}
