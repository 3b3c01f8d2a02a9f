#include "log/pr_log_writer.h"

#include "common/result_code.h"
#include "log/pr_log.h"

PRLogWriter::PRLogWriter(int level) : mLevel(level), mId(GeneratePRLogId()) {}

int PRLogWriter::GetId() {
    return mId;
}

int PRLogWriter::SetLevel(int level) {
    mLevel = level;
    return RESULT_OK;
}
