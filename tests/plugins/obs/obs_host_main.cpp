#include <gtest/gtest.h>

#include <cstdio>

#include "tests/plugins/obs/obs_host.h"

/// Usage: obs_host_tests FOLDER-OF-THE-PLUG-IN [GoogleTest options]
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc != 2 || !audio_filter::obs::StartObs(argv[1])) {
        std::fputs(audio_filter::obs::TakeLog().c_str(), stderr);
        std::fputs("obs_host_tests: OBS did not start with the plug-in\n", stderr);
        return 1;
    }
    const int failed = RUN_ALL_TESTS();
    const long left = audio_filter::obs::StopObs();
    std::printf("bnum_allocs() after obs_shutdown: %ld\n", left);
    return failed != 0 || left != 0 ? 1 : 0;
}
