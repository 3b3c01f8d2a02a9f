#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "log_capture.h"
#include "plain_filter.h"

/// Makes the same calls on an AudioFilter and on the reference model, and expects the same results,
/// bytes, log lines and events.
class ComparedFilters {
public:
    enum class Entry { kProcess, kProcessResample, kSyncProcessDelay };

    /// Replaces both by new ones without a listener.
    void Renew();
    void Init(int sampleRate, int channels, SampleFmt fmt, const ProcessSwitchMap* switches);
    void Clear();
    void SetMethod(const ProcessSwitchMap* switches);
    void SetParameter(const ProcessParam* param, ProcessType type);
    void SetListener(bool isSet);

    /// @param call its size, sources and input bytes: `size` of them, unless the call is refused
    ///        before reading. The buffers are made here, as large as the headers require.
    /// @param shift bytes from an aligned address to the start of the buffers
    /// @return the code
    int Run(Entry entry, PlainFilter::Call call, std::size_t shift);

    /// Whether the last call, not in place, wrote into its input.
    bool HasCorrected() const { return mHasCorrected; }
    const AudioFilter& Filter() const { return *mFilter; }

    /// Whether every entry refuses a buffer of that size.
    bool Refuses(int size, int sources) const;

private:
    class Listener : public FilterListener {
    public:
        void OnEvent(int code, std::string message) override { events.emplace_back(code, message); }
        std::vector<std::pair<int, std::string>> events;
    };

    std::size_t RoomFor(Entry entry, const PlainFilter::Call& call) const;
    void ExpectTheSame();

    LogCapture mLog;
    Listener mListener;
    std::unique_ptr<AudioFilter> mFilter = std::make_unique<AudioFilter>();
    std::unique_ptr<PlainFilter> mExpected = std::make_unique<PlainFilter>();
    bool mHasCorrected = false;
};
