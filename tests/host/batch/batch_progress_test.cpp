#include "host/batch/batch_progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(BatchProgress, OneBarShowsAllFilesByTheirSizes) {
    std::ostringstream out;
    const auto lastBar = [&out] { return out.str().substr(out.str().rfind('\r') + 1); };
    BatchProgress progress({&out, [] { return 80; }, ""}, {300, 100, 0});
    progress.Report(0, 0.5);
    EXPECT_EQ(lastBar(), "0/3 [##############..........................]  37%");
    progress.Report(1, 1.0);
    EXPECT_EQ(lastBar(), "0/3 [########################................]  62%");
    progress.Complete(1);
    progress.Report(0, 0.4);  // a second pass does not move it back
    EXPECT_EQ(lastBar(), "1/3 [########################................]  62%");
    progress.Complete(0);
    EXPECT_EQ(lastBar(), "2/3 [#######################################.]  99%");
    progress.Complete(2);
    EXPECT_EQ(lastBar(), "3/3 [########################################] 100%");
}

}  // namespace
