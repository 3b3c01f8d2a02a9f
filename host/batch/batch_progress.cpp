#include "host/batch/batch_progress.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

std::vector<std::int64_t> AtLeastOne(std::vector<std::int64_t> bytes) {
    for (std::int64_t& count : bytes) {
        count = std::max<std::int64_t>(count, 1);
    }
    return bytes;
}

ProgressOutput WithPrefix(ProgressOutput output, std::function<std::string()> prefix) {
    output.prefix = std::move(prefix);
    return output;
}

}  // namespace

BatchProgress::BatchProgress(ProgressOutput output, std::vector<std::int64_t> bytes)
    : mBytes(AtLeastOne(std::move(bytes))),
      mDone(mBytes.size()),
      mBar(WithPrefix(std::move(output), [this] { return Prefix(); }),
           std::accumulate(mBytes.begin(), mBytes.end(), std::int64_t{0})) {}

void BatchProgress::Report(std::size_t file, double share) {
    const std::lock_guard<std::mutex> lock(mMutex);
    Advance(file, static_cast<std::int64_t>(share * static_cast<double>(mBytes[file])));
}

void BatchProgress::Complete(std::size_t file) {
    const std::lock_guard<std::mutex> lock(mMutex);
    ++mCompleted;
    Advance(file, mBytes[file]);
}

void BatchProgress::Advance(std::size_t file, std::int64_t to) {
    const std::int64_t more = std::max<std::int64_t>(to - mDone[file], 0);
    mDone[file] += more;
    mBar.Advance(more);
}

std::string BatchProgress::Prefix() const {
    return std::to_string(mCompleted) + "/" + std::to_string(mBytes.size()) + " ";
}
