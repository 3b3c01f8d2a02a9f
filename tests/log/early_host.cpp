/// A host that logs before main, in the constructor of a global object.

#include <cstdio>
#include <cstdlib>

#include "audio_filter/audio_filter.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_log.h"

namespace {

struct EarlyUser {
    EarlyUser() {
        PR_LOG_ENABLE(true);
        AudioFilter filter;
        filter.Clear();
        if (pr_log == nullptr) {
            std::abort();
        }
        PRConsoleLogParam console = {0};
        writer = pr_log->AddLog(PROCESS_LOG_CONSOLE, &console, PROCESS_LOG_INFO);
        filter.Clear();
    }

    int writer = -1;
} earlyUser;

}  // namespace

int main() {
    return pr_log->RemoveLog(earlyUser.writer);
}
