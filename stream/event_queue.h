#pragma once

#include <array>
#include <atomic>
#include <cstddef>

#include "stream/stream_types.h"

namespace audio_filter::internal {

/// A queue without locks, from one thread to one other.
class EventQueue {
public:
    /// [audio] Drops the event if the queue is full.
    void Push(const StreamEvent& event) {
        const std::size_t tail = mTail.load(std::memory_order_relaxed);
        if (tail - mHead.load(std::memory_order_acquire) < kCapacity) {
            mEvents[tail % kCapacity] = event;
            mTail.store(tail + 1, std::memory_order_release);
        }
    }

    /// [any] @return false if the queue is empty
    bool Pop(StreamEvent& event) {
        const std::size_t head = mHead.load(std::memory_order_relaxed);
        if (head == mTail.load(std::memory_order_acquire)) {
            return false;
        }
        event = mEvents[head % kCapacity];
        mHead.store(head + 1, std::memory_order_release);
        return true;
    }

private:
    static constexpr std::size_t kCapacity = 64;

    std::array<StreamEvent, kCapacity> mEvents = {};
    std::atomic<std::size_t> mHead = 0;  ///< events taken
    std::atomic<std::size_t> mTail = 0;  ///< events put
};

}  // namespace audio_filter::internal
