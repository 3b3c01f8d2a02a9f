#include "log/pr_file_log_writer.h"

#include <new>

#include "common/wall_clock.h"
#include "log/log_output.h"
#include "log/pr_log.h"

using namespace audio_filter::internal;

PRFileLogWriter::PRFileLogWriter(int level) : PRLogWriter(level) {}

PRFileLogWriter::~PRFileLogWriter() {
    PRFileLogWriter::Destroy();
}

int PRFileLogWriter::Init(void* param) try {
    const auto* block = static_cast<const PRFileLogParam*>(param);
    if (block == nullptr || block->namePrefix.empty()) {
        std::fprintf(stderr, "InitParam error\n");
        return -1;
    }
    mNamePrefix = block->namePrefix;
    nPartionSize = block->nPartionSize;
    mPartitionPeriod = block->partitionPeriod;
    if (nPartionSize >= 1 && mPartitionPeriod >= 1) {
        std::fprintf(stderr, "InitParam error nPartionSize canot both > 0");
        return -1;
    }
    if (OpenFile(nPartionSize >= 1 ? "0" : GetPRFormatDate2()) != 0) {
        return -1;
    }
    mWrittenCount = 0;
    mPartNumber = 0;
    mStartTime = CalendarSecondsNow();
    return 0;
} catch (const std::bad_alloc&) {
    return -1;
}

int PRFileLogWriter::WriteLog(int level, const char* prefix, const char* format, char* args) {
    if (level < mLevel) {
        return 0;
    }
    if (CheckPartion() != 0 || mFile == nullptr) {
        return -1;
    }
    PrintLogMessage(mFile, prefix, format, args);
    return 0;
}

void PRFileLogWriter::Destroy() {
    if (mFile != nullptr) {
        std::fclose(mFile);
        mFile = nullptr;
    }
}

int PRFileLogWriter::CheckPartion() try {
    if (nPartionSize > 0) {
        if (mWrittenCount <= static_cast<std::uint32_t>(nPartionSize)) {
            return 0;
        }
        ++mPartNumber;
        return OpenFile(std::to_string(mPartNumber));
    }
    if (mPartitionPeriod >= 1 && CalendarSecondsNow() - mStartTime > mPartitionPeriod) {
        return OpenFile(GetPRFormatDate2());
    }
    return 0;
} catch (const std::bad_alloc&) {
    return -1;
}

/// Closes the file and opens, truncated, the one named prefix + "_" + suffix.
int PRFileLogWriter::OpenFile(const std::string& suffix) {
    Destroy();
    mFileName = mNamePrefix + "_" + suffix;
    mFile = std::fopen(mFileName.c_str(), "w+");
    if (mFile == nullptr) {
        std::fprintf(stderr, "could not open log file %s", mFileName.c_str());
        return -1;
    }
    return 0;
}
