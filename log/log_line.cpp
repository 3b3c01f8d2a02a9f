#include "log/log_line.h"

namespace audio_filter::internal {

std::string LogPrefix(ProcessLogLevel level, const LogSite& site) {
    constexpr const char* kTags[] = {"[DEBUG]", "[INFO]", "[WARN]", "[ERROR]"};
    return GetPRFormatDate() + ":" + kTags[level - PROCESS_LOG_DEBUG] +
           "MediaProcessLog:" + site.function + ":" + int2str_pr(site.line);
}

}  // namespace audio_filter::internal
