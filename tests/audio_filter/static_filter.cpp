/// A host with a static filter and static loggers that exits with logging on: the parts of the
/// library that their destructors use must still exist.

#include <cstdlib>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_log.h"

namespace {

/// A new stream with more than a second of a tone, so that music detection runs.
void Run(AudioFilter& filter, int rate) {
    ProcessSwitchMap switches = {
        {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
    bool good = filter.Init(rate, 1, SAMPLE_FMT_S16, &switches) == 0;
    const auto samples = static_cast<std::size_t>(rate / 100);
    AVParam param;
    for (int block = 0; block < 150; ++block) {
        std::vector<short> in(samples, static_cast<short>(block));
        std::vector<short> out(samples + 320);
        int size = static_cast<int>(2 * samples);
        good = filter.Process(reinterpret_cast<const char*>(in.data()),
                              reinterpret_cast<char*>(out.data()), size, {AV_SOURCE_MICROPHONE},
                              param, 0) == 0 &&
               good;
    }
    if (!good) {
        std::abort();
    }
}

MediaProcessLog early;
AudioFilter filter;
MediaProcessLog late;

/// Constructed before the filter's first Init, so destroyed after any static that Init creates.
struct LastUser {
    ~LastUser() { Run(filter, 44100); }
} lastUser;

}  // namespace

int main(int argc, char** argv) {
    PRConsoleLogParam console = {0};
    pr_log->AddLog(PROCESS_LOG_CONSOLE, &console, PROCESS_LOG_INFO);
    PR_LOG_ENABLE(true);
    early.WriteLog(PROCESS_LOG_DEBUG, "leaves the lock held");
    filter.SetLogger(argc > 1 && argv[1][0] == 'e' ? &early : &late);
    Run(filter, 44100);
    Run(filter, 32000);
    return 0;
}
