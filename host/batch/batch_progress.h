#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "host/progress_bar.h"

/// One display of the progress of several files, by their sizes. From any thread.
class BatchProgress {
public:
    /// @param bytes sizes of the files
    BatchProgress(ProgressOutput output, std::vector<std::int64_t> bytes);

    /// @param share of the file that is done, 0..1
    void Report(std::size_t file, double share);

    /// A file is done, or has been given up.
    void Complete(std::size_t file);

private:
    void Advance(std::size_t file, std::int64_t to);
    std::string Prefix() const;

    std::mutex mMutex;
    std::vector<std::int64_t> mBytes;  ///< at least 1
    std::vector<std::int64_t> mDone;
    std::size_t mCompleted = 0;
    ProgressBar mBar;
};
