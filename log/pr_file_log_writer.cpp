#include "log/pr_file_log_writer.h"

#include <new>

#include "common/result_code.h"
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
        return RESULT_FAILURE;
    }
    mNamePrefix = block->namePrefix;
    nPartionSize = block->nPartionSize;
    mPartitionPeriod = block->partitionPeriod;
    if (nPartionSize >= 1 && mPartitionPeriod >= 1) {
        std::fprintf(stderr, "InitParam error nPartionSize canot both > 0");
        return RESULT_FAILURE;
    }
    if (OpenFile(nPartionSize >= 1 ? "0" : GetPRFormatDate2()) != RESULT_OK) {
        return RESULT_FAILURE;
    }
    mWrittenCount = 0;
    mPartNumber = 0;
    mStartTime = CalendarSecondsNow();
    return RESULT_OK;
} catch (const std::bad_alloc&) {
    return RESULT_FAILURE;
}

int PRFileLogWriter::WriteLog(int level, const char* prefix, const char* format, char* args) {
    if (level < mLevel) {
        return RESULT_OK;
    }
    if (CheckPartion() != RESULT_OK || mFile == nullptr) {
        return RESULT_FAILURE;
    }
    PrintLogMessage(mFile, prefix, format, args);
    return RESULT_OK;
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
            return RESULT_OK;
        }
        ++mPartNumber;
        return OpenFile(std::to_string(mPartNumber));
    }
    if (mPartitionPeriod >= 1 && CalendarSecondsNow() - mStartTime > mPartitionPeriod) {
        return OpenFile(GetPRFormatDate2());
    }
    return RESULT_OK;
} catch (const std::bad_alloc&) {
    return RESULT_FAILURE;
}

/// Closes the file, then opens and truncates prefix + "_" + suffix.
int PRFileLogWriter::OpenFile(const std::string& suffix) {
    Destroy();
    mFileName = mNamePrefix + "_" + suffix;
    mFile = std::fopen(mFileName.c_str(), "w+");
    if (mFile == nullptr) {
        std::fprintf(stderr, "could not open log file %s", mFileName.c_str());
        return RESULT_FAILURE;
    }
    return RESULT_OK;
}
