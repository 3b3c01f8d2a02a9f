#include "log/pr_console_log_writer.h"

#include "common/result_code.h"
#include "log/log_output.h"

using namespace audio_filter::internal;

PRConsoleLogWriter::PRConsoleLogWriter(int level) : PRLogWriter(level) {}

int PRConsoleLogWriter::Init(void* param) {
    if (param == nullptr) {
        std::fprintf(stderr, "InitParam error\n");
        return RESULT_FAILURE;
    }
    mType = static_cast<const PRConsoleLogParam*>(param)->nType;
    switch (mType) {
        case 0: mStream = stdout; return RESULT_OK;
        case 1: mStream = stderr; return RESULT_OK;
        default:
            mStream = nullptr;
            std::fprintf(stderr, "InitParam error nType=0 stdout, nType=1 stderr now nType=%d",
                         mType);
            return RESULT_FAILURE;
    }
}

int PRConsoleLogWriter::WriteLog(int level, const char* prefix, const char* format, char* args) {
    if (level < mLevel) {
        return RESULT_OK;
    }
    if (mStream == nullptr) {
        return RESULT_FAILURE;
    }
    PrintLogMessage(mStream, prefix, format, args);
    return RESULT_OK;
}

void PRConsoleLogWriter::Destroy() {}
