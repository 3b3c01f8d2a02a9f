#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "log_capture.h"
#include "plain_filter.h"

/// An AudioFilter and the plain one, called alike. Whatever a call answers, writes, logs and tells
/// is expected to be the same.
class ComparedFilters {
public:
    enum class Entry { kProcess, kProcessResample, kSyncProcessDelay };

    /// Both anew, without a listener.
    void Renew();
    void Init(int sampleRate, int channels, SampleFmt fmt, const ProcessSwitchMap* switches);
    void Clear();
    void SetMethod(const ProcessSwitchMap* switches);
    void SetParameter(const ProcessParam* param, ProcessType type);
    void SetListener(bool listens);

    /// @param call its size and sources, and the bytes of `in`: as many, unless they are not to be
    ///        looked at. The rest is made here: buffers as large as the headers ask for.
    /// @param shift how far past an aligned address the buffers begin
    /// @return the code
    int Run(Entry entry, PlainFilter::Call call, std::size_t shift);

    /// Whether the last call has written into its input, out of place.
    bool HasCorrected() const { return mHasCorrected; }
    const AudioFilter& Filter() const { return *mFilter; }

    /// Whether every entry refuses a buffer of that size, whatever is in it.
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
