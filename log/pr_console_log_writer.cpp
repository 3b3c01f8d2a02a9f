#include "log/pr_console_log_writer.h"

#include "log/log_output.h"

using namespace audio_filter::internal;

PRConsoleLogWriter::PRConsoleLogWriter(int level) : PRLogWriter(level) {}

int PRConsoleLogWriter::Init(void* param) {
    if (param == nullptr) {
        std::fprintf(stderr, "InitParam error\n");
        return -1;
    }
    mType = static_cast<const PRConsoleLogParam*>(param)->nType;
    switch (mType) {
        case 0: mStream = stdout; return 0;
        case 1: mStream = stderr; return 0;
        default:
            std::fprintf(stderr, "InitParam error nType=0 stdout, nType=1 stderr now nType=%d",
                         mType);
            return -1;
    }
}

int PRConsoleLogWriter::WriteLog(int level, const char* prefix, const char* format, char* args) {
    if (level < mLevel) {
        return 0;
    }
    if (mStream == nullptr) {
        return -1;
    }
    PrintLogMessage(mStream, prefix, format, args);
    return 0;
}

void PRConsoleLogWriter::Destroy() {}
