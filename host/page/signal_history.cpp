#include "host/page/signal_history.h"

SignalHistory::SignalHistory(const AudioFormat& format)
    : mColumns(format.sampleRate, format.channels), mExcerpts(format.sampleRate, format.channels) {}

void SignalHistory::AddBefore(const std::vector<float>& block) {
    mWaiting.insert(mWaiting.end(), block.begin(), block.end());
}

void SignalHistory::AddAfter(const std::vector<float>& block) {
    const auto count = static_cast<std::ptrdiff_t>(block.size());
    const std::vector<float> before(mWaiting.begin(), mWaiting.begin() + count);
    mWaiting.erase(mWaiting.begin(), mWaiting.begin() + count);
    mColumns.Add(before, block);
    mExcerpts.Add(before, block);
}

void SignalHistory::Finish() {
    mColumns.Finish();
    mExcerpts.Finish();
}
