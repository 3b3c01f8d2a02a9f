#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "audio_filter/log_address.h"
#include "log_capture.h"
#include "support/bytes.h"

constexpr AVSourceType kMic = AV_SOURCE_MICROPHONE;

/// An address as log lines print it.
inline std::string Number(const void* address) {
    return std::to_string(audio_filter::internal::LogAddress(address));
}

/// A filter with a listener, and its log lines and events.
class FilterTest : public testing::Test, public FilterListener {
protected:
    using Events = std::vector<std::pair<int, std::string>>;
    using Lines = std::vector<std::string>;

    FilterTest() { filter->SetListener(this); }

    void OnEvent(int code, std::string message) override { events.emplace_back(code, message); }

    /// Initialises with the given kinds on, and drops the lines and events of that.
    int Start(int rate, int channels, SampleFmt fmt, std::vector<ProcessType> kinds = {}) {
        ProcessSwitchMap switches;
        for (const ProcessType kind : kinds) {
            switches[kind] = true;
        }
        const int code = filter->Init(rate, channels, fmt, &switches);
        log.Lines();
        events.clear();
        return code;
    }

    /// Processes samples into a buffer with room for 10 ms more, and keeps the output.
    template <typename Sample>
    int Process(std::vector<Sample>& samples, std::vector<AVSourceType> sources) {
        std::vector<Sample> room(samples.size() + 320 * 3);
        size = ByteCount(samples);
        const int code = filter->Process(BytesOf(samples), BytesOf(room), size, sources, param, 0);
        out.assign(BytesOf(room), BytesOf(room) + (size > 0 ? size : 0));
        return code;
    }

    template <typename Sample>
    std::vector<Sample> Out() const {
        std::vector<Sample> samples(out.size() / sizeof(Sample));
        std::memcpy(samples.data(), out.data(), samples.size() * sizeof(Sample));
        return samples;
    }

    LogCapture log;
    Events events;
    AVParam param;
    int size = 0;
    std::vector<char> out;
    std::unique_ptr<AudioFilter> filter = std::make_unique<AudioFilter>();
};

constexpr AVSourceType kUnknownSource = static_cast<AVSourceType>(5);
