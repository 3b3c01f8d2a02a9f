#include <gtest/gtest.h>
#include <malloc.h>

#include "plugins/gstreamer/element_harness.h"

namespace {

std::size_t AllocatedBytes() {
    return mallinfo2().uordblks + mallinfo2().hblkhd;
}

void OpenAndClose(int instances) {
    for (int i = 0; i < instances; ++i) {
        ElementHarness harness({.rate = 48000, .channels = 2});
        harness.Set("music-detection", TRUE);
        harness.Push(Noise(9600));
        harness.Send(gst_event_new_eos());
        harness.Pull();
    }
}

TEST(GStreamerInstances, TwoHundredLeaveNoMemoryBehind) {
    OpenAndClose(20);
    const std::size_t before = AllocatedBytes();
    OpenAndClose(200);
    const std::size_t after = AllocatedBytes();
    std::printf("%zu bytes before, %zu after 200 instances\n", before, after);
    EXPECT_LT(after, before + 50000);
}

}  // namespace
