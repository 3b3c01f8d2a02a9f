#include "host/progress_bar.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace {

constexpr std::int64_t kCells = 40;

}  // namespace

ProgressBar::ProgressBar(std::ostream* out, std::optional<std::int64_t> total)
    : mOut(total && *total > 0 ? out : nullptr), mTotal(total.value_or(0)) {}

ProgressBar::~ProgressBar() {
    if (mOut != nullptr) {
        *mOut << '\r' << std::string(kCells + 7, ' ') << '\r' << std::flush;
    }
}

void ProgressBar::Advance(std::int64_t amount) {
    mDone += amount;
    const std::int64_t percent = mTotal > 0 ? std::min<std::int64_t>(100, mDone * 100 / mTotal) : 0;
    if (mOut == nullptr || percent == mPercent) {
        return;
    }
    mPercent = percent;
    const auto filled = static_cast<std::size_t>(percent * kCells / 100);
    const std::string number = std::to_string(percent);
    *mOut << "\r[" << std::string(filled, '#') << std::string(kCells - filled, '.') << "] "
          << std::string(3 - number.size(), ' ') << number << '%' << std::flush;
}
