#include "host/log_file.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

#include "host/failure.h"
#include "log/media_process_log.h"
#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"

namespace {

/// A hidden name in the same folder: the writer appends to it, and truncates a file of that name.
std::string PrefixBeside(const std::filesystem::path& path) {
    return path.parent_path() / (".audio-filter-" + std::to_string(std::random_device()()));
}

/// A file writer with a size limit, which it never reaches, numbers its files from 0.
std::string NameOfWriter(const std::string& prefix) {
    return prefix + "_0";
}

}  // namespace

LogFile::LogFile(const std::string& path) : mPath(path), mPrefix(PrefixBeside(path)) {
    // The rename at the end would replace a device or a pipe.
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw Failure(path, "not a regular file");
    }
    // The writer reports failures on standard error only.
    if (!std::ofstream(path) || !std::ofstream(NameOfWriter(mPrefix))) {
        throw Failure(path, "cannot be written");
    }
    PRFileLogParam param = {mPrefix, 1, 0};
    mId = pr_log->AddLog(PROCESS_LOG_FILE, &param, PROCESS_LOG_DEBUG);
    PR_LOG_ENABLE(true);
}

LogFile::~LogFile() {
    PR_LOG_ENABLE(false);
    pr_log->RemoveLog(mId);
    std::error_code ignored;
    std::filesystem::rename(NameOfWriter(mPrefix), mPath, ignored);
}
