#include "compared_filters.h"

#include <algorithm>
#include <limits>
#include <new>
#include <optional>

#include "support/block.h"

namespace {

/// A copy of a map that a call may change, or null.
using OptionalSwitches = std::optional<ProcessSwitchMap>;

OptionalSwitches CopyOf(const ProcessSwitchMap* switches) {
    return switches == nullptr ? OptionalSwitches() : OptionalSwitches(*switches);
}

ProcessSwitchMap* AddressOf(OptionalSwitches& switches) {
    return switches ? &*switches : nullptr;
}

}  // namespace

void ComparedFilters::Renew() {
    mFilter.reset();
    mExpected->Clear();
    ExpectTheSame();
    mFilter = std::make_unique<AudioFilter>();
    mExpected = std::make_unique<PlainFilter>();
    ExpectTheSame();
}

/// An Init that runs out of memory is not successful.
void ComparedFilters::Init(int sampleRate, int channels, SampleFmt fmt,
                           const ProcessSwitchMap* switches) {
    OptionalSwitches given = CopyOf(switches);
    OptionalSwitches model = given;
    const double second =
        static_cast<double>(sampleRate) * channels * PlainFilter::SampleBytesOf(fmt);
    try {
        const int code = mFilter->Init(sampleRate, channels, fmt, AddressOf(given));
        EXPECT_EQ(code, mExpected->Init(sampleRate, channels, fmt, AddressOf(model)));
        EXPECT_TRUE(code != 0 || second <= std::numeric_limits<std::int32_t>::max());
    } catch (const std::bad_alloc&) {
        EXPECT_GT(second, 1e7) << "out of memory for a small stream";
        mExpected->FailToInit(sampleRate, channels, fmt);
    }
    EXPECT_EQ(given, model);
    ExpectTheSame();
}

void ComparedFilters::Clear() {
    mExpected->Clear();
    EXPECT_TRUE(mFilter->Clear());
    ExpectTheSame();
}

void ComparedFilters::SetMethod(const ProcessSwitchMap* switches) {
    OptionalSwitches given = CopyOf(switches);
    OptionalSwitches model = given;
    EXPECT_EQ(mFilter->SetMethod(AddressOf(given)), mExpected->SetMethod(AddressOf(model)));
    EXPECT_EQ(given, model);
    ExpectTheSame();
}

void ComparedFilters::SetParameter(const ProcessParam* param, ProcessType type) {
    if (param == nullptr) {
        EXPECT_FALSE(mFilter->SetParameter(nullptr, type));
    } else {
        ProcessParam given = *param;
        EXPECT_EQ(mFilter->SetParameter(&given, type),
                  mExpected->SetParameter(param->gain, param->level, type));
    }
    ExpectTheSame();
}

void ComparedFilters::SetListener(bool isSet) {
    mExpected->hasListener = isSet;
    EXPECT_TRUE(mFilter->SetListener(isSet ? &mListener : nullptr));
    ExpectTheSame();
}

/// The sizes of buffers that the headers require.
std::size_t ComparedFilters::RoomFor(Entry entry, const PlainFilter::Call& call) const {
    const std::size_t bytes = call.in.size();
    const std::size_t blocks = std::max<std::size_t>(call.sources.size(), 1);
    const int channels = mFilter->mChannels <= 2 ? mFilter->mChannels : 0;
    const int frame =
        mFilter->mProcessRate / 100 * channels * PlainFilter::SampleBytesOf(mFilter->mSampleFmt);
    switch (entry) {
        case Entry::kProcess: return bytes + static_cast<std::size_t>(frame);
        case Entry::kProcessResample: return bytes / blocks + static_cast<std::size_t>(frame);
        default: return bytes / blocks;
    }
}

bool ComparedFilters::Refuses(int size, int sources) const {
    return mExpected->Exceeds(size, sources) && mExpected->Exceeds(size, 1);
}

int ComparedFilters::Run(Entry entry, PlainFilter::Call call, std::size_t shift) {
    call.out.assign(RoomFor(entry, call), '\x5A');
    if (call.inPlace) {
        call.in.resize(std::max(call.in.size(), call.out.size()), '\x5A');
    }
    const std::vector<char> asGiven = call.in;
    Block in(call.in, shift);
    Block out(call.out, shift);
    AVParam param = call.param;
    int size = call.size;
    const char* inData = call.nullIn ? nullptr : in.Data();
    char* outData = call.nullOut ? nullptr : call.inPlace ? in.Data() : out.Data();
    call.inAddress = inData;
    call.outAddress = outData;
    call.workAddress = mFilter->mBuffer;

    int expected = 0;
    int code = 0;
    switch (entry) {
        case Entry::kProcess:
            code = mFilter->Process(inData, outData, size, call.sources, param, 7);
            expected = mExpected->Process(call);
            break;
        case Entry::kProcessResample:
            code = mFilter->ProcessResample(inData, outData, size, call.sources, param, 7);
            expected = mExpected->ProcessResample(call);
            break;
        case Entry::kSyncProcessDelay:
            code = mFilter->SyncProcessDelay(inData, outData, size, call.sources);
            expected = mExpected->SyncProcessDelay(call);
            break;
    }
    mHasCorrected = !call.inPlace && call.in != asGiven;
    EXPECT_EQ(code, expected);
    EXPECT_EQ(size, call.size);
    EXPECT_TRUE(in.Bytes() == call.in) << "the input after the call";
    EXPECT_TRUE(out.Bytes() == call.out) << "the output and the bytes after it";
    EXPECT_EQ(param.audioSampleRate, call.param.audioSampleRate);
    EXPECT_EQ(param.audioChannels, call.param.audioChannels);
    EXPECT_EQ(param.audioSampleFmt, call.param.audioSampleFmt);
    ExpectTheSame();
    return code;
}

void ComparedFilters::ExpectTheSame() {
    EXPECT_EQ(mLog.Lines(), mExpected->messages);
    EXPECT_EQ(mListener.events, mExpected->events);
    mExpected->messages.clear();
    mExpected->events.clear();
    mListener.events.clear();
    if (mFilter == nullptr) {
        return;
    }
    EXPECT_EQ(mFilter->mSwitchState, mExpected->on);
    EXPECT_EQ(mFilter->mDenoiseLevel, mExpected->level);
    EXPECT_EQ(mFilter->mSrcNum, mExpected->sourceCount);
    EXPECT_EQ(mFilter->mIsMusic, mExpected->music);
}
