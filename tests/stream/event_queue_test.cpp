#include "stream/event_queue.h"

#include <gtest/gtest.h>

#include <thread>

namespace audio_filter::internal {

namespace {

StreamEvent At(std::int64_t frame) {
    return {.frame = frame};
}

TEST(EventQueue, ReturnsEventsInTheirOrderAndIsThenEmpty) {
    EventQueue queue;
    StreamEvent event = At(-5);
    EXPECT_FALSE(queue.Pop(event));
    EXPECT_EQ(event.frame, -5);
    for (int round = 0; round < 100; ++round) {
        queue.Push(At(2 * round));
        queue.Push(At(2 * round + 1));
        ASSERT_TRUE(queue.Pop(event));
        EXPECT_EQ(event.frame, 2 * round);
        ASSERT_TRUE(queue.Pop(event));
        EXPECT_EQ(event.frame, 2 * round + 1);
        EXPECT_FALSE(queue.Pop(event));
    }
}

TEST(EventQueue, Keeps64EventsAndDropsTheNextOnes) {
    EventQueue queue;
    for (int i = 0; i < 70; ++i) {
        queue.Push(At(i));
    }
    StreamEvent event;
    for (int i = 0; i < 64; ++i) {
        ASSERT_TRUE(queue.Pop(event));
        EXPECT_EQ(event.frame, i);
    }
    EXPECT_FALSE(queue.Pop(event));
    queue.Push(At(99));
    ASSERT_TRUE(queue.Pop(event));
    EXPECT_EQ(event.frame, 99);
}

TEST(EventQueue, AnotherThreadTakesEveryEventThatFits) {
    EventQueue queue;
    std::int64_t last = 0;
    std::thread taker([&] {
        for (StreamEvent event; last < 20000;) {
            if (queue.Pop(event)) {
                ASSERT_GT(event.frame, last);
                ASSERT_EQ(event.source, static_cast<int>(event.frame % 16));
                last = event.frame;
            }
        }
    });
    for (std::int64_t frame = 1; frame < 20000; ++frame) {
        queue.Push({.source = static_cast<int>(frame % 16), .frame = frame});
    }
    // The last one has to fit.
    while (queue.mTail - queue.mHead >= 64) {
        std::this_thread::yield();
    }
    queue.Push({.source = 20000 % 16, .frame = 20000});
    taker.join();
    EXPECT_EQ(last, 20000);
}

}  // namespace

}  // namespace audio_filter::internal
