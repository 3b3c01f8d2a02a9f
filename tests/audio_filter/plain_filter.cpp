#include "plain_filter.h"
#include "common/result_code.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <set>

namespace {

int Low32(const void* address) {
    return static_cast<int>(reinterpret_cast<std::uintptr_t>(address) & 0xFFFFFFFFU);
}

short* Shorts(char* bytes) {
    return reinterpret_cast<short*>(bytes);
}

float* Floats(char* bytes) {
    return reinterpret_cast<float*>(bytes);
}

void Copy(const char* from, char* to, int bytes) {
    std::vector<char> between(from, from + bytes);
    std::copy(between.begin(), between.end(), to);
}

}  // namespace

PlainFilter::PlainFilter() {
    for (int kind = 0; kind < 15; ++kind) {
        on[static_cast<ProcessType>(kind)] = false;
    }
}

void PlainFilter::Log(const char* tag, const char* function, const std::string& line,
                      const char* format, ...) {
    char text[300];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    messages.push_back(std::string("[") + tag + "]MediaProcessLog:AudioFilter::" + function + ":" +
                       line + ":" + text);
}

int PlainFilter::Init(int sampleRate, int channelCount, SampleFmt fmt, ProcessSwitchMap* switches) {
    mInited = false;
    if (sampleRate < 1 || channelCount < 1 || fmt == -1) {
        Log("ERROR", "Init", "*", "Input parameter is invalid!!!");
        return RESULT_INVALID;
    }
    TakeStream(sampleRate, channelCount, fmt);
    const int spare = mChannels <= 2 ? 320 : 0;
    mWork.assign(static_cast<std::size_t>((mRate + spare) * mChannels * mSampleBytes), 0);
    for (PhaseCheck& check : mChecks) {
        check.Init(sampleRate, fmt >= 5 && fmt <= 9);
    }
    music = false;
    level = 3;
    const int denoise = mDenoise.Init(mProcessRate, channelCount, fmt, 3);
    if (denoise != 0) {
        Log("ERROR", "Init", "*", "audio denoisor init error, error code is %d", denoise);
    }
    if (sampleRate >= 32000 && sampleRate <= 44100) {
        mClassifier.Init(static_cast<unsigned short>(channelCount), sampleRate, fmt);
    }
    const int gain = mGain.Init(fmt);
    if (gain != 0) {
        Log("ERROR", "Init", "*", "AGC init error, error code is %d", gain);
    }
    const int mixing = mMixing.Init(fmt);
    if (mixing != 0) {
        Log("ERROR", "Init", "*", "audio mixer init error, error code is %d", mixing);
    }
    SetMethod(switches);
    mInited = true;
    return 0;
}

void PlainFilter::FailToInit(int sampleRate, int channelCount, SampleFmt fmt) {
    mInited = false;
    TakeStream(sampleRate, channelCount, fmt);
    mWork.clear();
}

void PlainFilter::TakeStream(int sampleRate, int channelCount, SampleFmt fmt) {
    mHasStream = true;
    mRate = sampleRate;
    mProcessRate = sampleRate <= 8000 ? 8000 : sampleRate <= 16000 ? 16000 : 32000;
    mChannels = channelCount;
    mFmt = fmt;
    mSampleBytes = SampleBytesOf(fmt);
}

int PlainFilter::SampleBytesOf(SampleFmt fmt) {
    static const std::map<int, int> bytes = {{0, 1}, {1, 2}, {2, 4}, {3, 4}, {4, 8},
                                             {5, 1}, {6, 2}, {7, 4}, {8, 4}, {9, 8}};
    return bytes.count(fmt) != 0 ? bytes.at(fmt) : 0;
}

/// The bound wraps around in 32 bits.
bool PlainFilter::Exceeds(int size, int seconds) const {
    std::uint64_t bound = 1;
    for (const std::int64_t factor : {mSampleBytes, mChannels, mRate, std::int64_t{seconds}}) {
        bound = bound * static_cast<std::uint64_t>(factor) % 0x1'0000'0000;
    }
    return mHasStream && size > static_cast<std::int32_t>(bound);
}

void PlainFilter::Clear() {
    mInited = false;
    mWork.clear();
    for (auto& [kind, isOn] : on) {
        isOn = false;
    }
    for (PhaseCheck& check : mChecks) {
        check.Clear();
    }
    mDenoise.Clear();
    mGain.Clear();
    mMixing.Clear();
    Log("INFO", "Clear", "*", "Audio filter is cleared");
}

bool PlainFilter::SetMethod(ProcessSwitchMap* switches) {
    if (switches == nullptr) {
        Log("WARN", "SetMethod", "*", "input switch state is null!");
        return false;
    }
    const bool phase = mChecks[0].IsInited() && mChecks[1].IsInited() && mChecks[2].IsInited();
    Switch(*switches, AP_DENOISE, mDenoise.IsInited(), "AP_DENOISE", "audio denoise");
    Switch(*switches, AP_PHASE_CHECK, phase, "AP_PHASE_CHECK", "phase check");
    Switch(*switches, AP_GAIN, mGain.IsInited(), "AP_GAIN", "AGC");
    Switch(*switches, AP_MIXING, mMixing.IsInited(), "AP_MIXING", "audio mixing");
    Log("INFO", "SetMethod", "*", "switch state is set");
    return true;
}

void PlainFilter::Switch(ProcessSwitchMap& switches, ProcessType kind, bool ready, const char* name,
                         const char* opening) {
    const bool wanted = switches[kind];
    const bool old = on[kind];
    if (wanted && !ready) {
        Log("ERROR", "SetMethod", "*", "try to open %s, but it is not inited!!!", opening);
    }
    on[kind] = wanted && ready;
    switches[kind] = on[kind];
    if (on[kind] == old) {
        return;
    }
    const std::string text = std::string(name) + (on[kind] ? " turn on" : " turn off");
    Log("INFO", "SetMethod", "*", "%s", text.c_str());
    if (hasListener) {
        static const std::map<std::string, int> codes = {
            {"AP_DENOISE turn on", 150001},     {"AP_DENOISE turn off", 150002},
            {"AP_PHASE_CHECK turn on", 150003}, {"AP_PHASE_CHECK turn off", 150004},
            {"AP_GAIN turn on", 150007},        {"AP_GAIN turn off", 150008},
            {"AP_MIXING turn on", 150009},      {"AP_MIXING turn off", 150010}};
        events.emplace_back(codes.at(text), text);
    }
}

bool PlainFilter::SetParameter(float gain, int wantedLevel, ProcessType type) {
    if (type == AP_GAIN && mGain.IsInited()) {
        return mGain.SetGain(gain);
    }
    if (type == AP_DENOISE && mDenoise.IsInited() && mDenoise.Config(wantedLevel)) {
        level = wantedLevel;
        return true;
    }
    return false;
}

int PlainFilter::Process(Call& call) {
    sourceCount = static_cast<int>(call.sources.size());
    if (call.nullIn || call.nullOut || call.size <= 0 || sourceCount == 0) {
        Log("ERROR", "Process", "275",
            "Input nothing!!!inData = %d, outData = %d, size = %d, mSrcNum = %d",
            Low32(call.inAddress), Low32(call.outAddress), call.size, sourceCount);
        return RESULT_BAD_ARGUMENT;
    }
    if (Exceeds(call.size, sourceCount) || call.size % sourceCount != 0) {
        Log("ERROR", "Process", "280", "Input parameter is error!!!");
        return RESULT_INVALID;
    }
    if (!mInited) {
        Log("ERROR", "Process", "285", "Have not been initialized yet!!!");
        return RESULT_NOT_INITIALISED;
    }
    call.size /= sourceCount;
    return sourceCount > 1 && on[AP_MIXING] ? Multi(call) : Single(call);
}

int PlainFilter::Single(Call& call) {
    const int type = call.sources[0];
    char* in = call.in.data();
    int& size = call.size;
    const bool isFloat = mFmt == 3 || mFmt == 8;
    const bool isShort = mFmt == 1 || mFmt == 6;
    Log("DEBUG", "SingleProcess", "436", "SingleProcess");
    if (on[AP_PHASE_CHECK] && mChannels == 2 && type >= 0 && type <= 3) {
        PhaseCheck& check = mChecks[type == 3 ? 0 : type];
        int code = 0;
        if (isFloat) {
            Log("DEBUG", "SingleProcess", "455",
                "[ASRC%d]phase check process(float), in:%d , byteSize:%d", type,
                Low32(call.inAddress), size);
            code = check.Check(Floats(in), size / 4);
        } else if (isShort) {
            Log("DEBUG", "SingleProcess", "460",
                "[ASRC%d]phase check processed(s16), in:%d , byteSize:%d", type,
                Low32(call.inAddress), size);
            code = check.Check(Shorts(in), size / 2);
        }
        if (code != RESULT_OK) {
            Log("ERROR", "SingleProcess", "465", "Error in phase check!!!");
        }
    }
    bool fromWork = false;
    bool denoised = false;
    if (on[AP_DENOISE] && type == 0) {
        fromWork = true;
        DetectMusic(in, size);
        if (mRate != 8000 && mRate != 16000 && (mRate < 32000 || mRate > 44100)) {
            return HandBack(call, call.in);
        }
        if (mDenoise.IsInited()) {
            Log("DEBUG", "SingleProcess", "491",
                "[ASRC%d]denoise process, in:%d, out:%d, byteSize:%d", 0, Low32(call.inAddress),
                Low32(call.workAddress), size);
            mDenoise.Process(in, mWork.data(), size);
            denoised = true;
        } else {
            Log("ERROR", "SingleProcess", "496", "Audio denoisor is not inited!!!");
        }
    }
    if (on[AP_GAIN]) {
        fromWork = denoised;
        Log("DEBUG", "SingleProcess", "523", "[ASRC%d]AGC process, in:%d, byteSize:%d", type,
            Low32(fromWork ? call.workAddress : call.inAddress), size);
        mGain.Process(fromWork ? mWork.data() : in, size);
    }
    Log("DEBUG", "SingleProcess", "530", "copy to outbuf, outData:%d, out:%d, byteSize:%d",
        Low32(call.outAddress), Low32(fromWork ? call.workAddress : call.inAddress), size);
    Copy(fromWork ? mWork.data() : in, call.inPlace ? in : call.out.data(), size);
    return 0;
}

int PlainFilter::Multi(Call& call) {
    char* in = call.in.data();
    int& size = call.size;
    const bool isFloat = mFmt == 3 || mFmt == 8;
    const bool isShort = mFmt == 1 || mFmt == 6;

    bool repeated = false;
    std::set<int> seen;
    for (const int type : call.sources) {
        if (type < 0 || type > 3) {
            Log("ERROR", "CheckSameSrcType", "683", "audio source check get a error type ");
            break;
        }
        repeated = repeated || !seen.insert(type).second;
        if (repeated) {
            break;
        }
    }
    if (!repeated && on[AP_PHASE_CHECK] && mChannels == 2) {
        int checker = 1;
        for (std::size_t i = 0; i < call.sources.size(); ++i) {
            const int type = call.sources[i];
            checker = type == 0 || type == 1 || type == 2 ? type : checker;
            const auto offset = static_cast<std::size_t>(size) * i;
            const int address = Low32(static_cast<const char*>(call.inAddress) + offset);
            if (isFloat) {
                Log("DEBUG", "MulitProcess", "557",
                    "[ASRC%d]multi phase check process(float), in:%d, byteSize:%d", type, address,
                    size);
                mChecks[checker].Check(Floats(in + offset), size / 4);
            }
            if (isShort) {
                Log("DEBUG", "MulitProcess", "561",
                    "[ASRC%d]multi phase check process(s16), in:%d, byteSize:%d", type, address,
                    size);
                mChecks[checker].Check(Shorts(in + offset), size / 2);
            }
        }
    }
    int total = sourceCount * size;
    Log("DEBUG", "MulitProcess", "586",
        "[ASRC mixed]mix process, in:%d, out:%d, size:%d, mSrcNum:%d", Low32(call.inAddress),
        Low32(call.workAddress), total, sourceCount);
    mMixing.Process(in, mWork.data(), total, sourceCount);
    size = std::min(total, static_cast<int>(mWork.size()));

    char* out = call.inPlace ? in : call.out.data();
    char* current = mWork.data();
    const void* address = call.workAddress;
    const bool microphone = std::count(call.sources.begin(), call.sources.end(), 0) > 0;
    if (on[AP_DENOISE] && microphone) {
        DetectMusic(mWork.data(), size);
        if (mRate != 8000 && mRate != 16000 && (mRate < 32000 || mRate > 44100)) {
            return HandBack(call, mWork);
        }
        Log("DEBUG", "MulitProcess", "619",
            "[ASRC mixed]denoise processed, in:%d, out:%d, byteSize:%d", Low32(call.workAddress),
            Low32(call.outAddress), size);
        mDenoise.Process(mWork.data(), out, size);
        current = out;
        address = call.outAddress;
    }
    if (on[AP_GAIN]) {
        Log("DEBUG", "MulitProcess", "628", "[ASRC mixed]AGC processed, in:%d, byteSize:%d",
            Low32(address), size);
        mGain.Process(current, size);
        if (current != out) {
            Log("DEBUG", "MulitProcess", "631", "copy to outbuf, outData:%d, in:%d, byteSize:%d",
                Low32(call.outAddress), Low32(address), size);
            Copy(current, out, size);
        }
    } else if (current != out) {
        Log("DEBUG", "MulitProcess", "636", "copy to outbuf, outData:%d, out:%d, byteSize:%d",
            Low32(call.outAddress), Low32(address), size);
        Copy(current, out, size);
    }
    return 0;
}

void PlainFilter::DetectMusic(char* data, int size) {
    if (mRate >= 32000 && mRate <= 44100 && mClassifier.IsInited()) {
        music = mClassifier.MusicCheck(reinterpret_cast<unsigned char*>(data),
                                       static_cast<unsigned int>(size));
        mDenoise.Config(music ? 0 : level);
    }
}

int PlainFilter::HandBack(Call& call, const std::vector<char>& from) {
    Copy(from.data(), call.inPlace ? call.in.data() : call.out.data(), call.size);
    call.param.audioSampleRate = mProcessRate;
    call.param.audioChannels = static_cast<int>(mChannels);
    call.param.audioSampleFmt = mFmt;
    return RESULT_NEEDS_RESAMPLING;
}

int PlainFilter::ProcessResample(Call& call) {
    const int count = static_cast<int>(call.sources.size());
    if (call.nullIn || call.nullOut || call.size <= 0 || count == 0) {
        Log("ERROR", "ProcessResample", "320", "Input nothing!!!");
        return RESULT_BAD_ARGUMENT;
    }
    if (Exceeds(call.size, 1) || call.size % count != 0) {
        Log("ERROR", "ProcessResample", "324", "Input parameter is error!!!");
        return RESULT_INVALID;
    }
    if (!mInited) {
        Log("ERROR", "ProcessResample", "328", "Have not been initialized yet!!!");
        return RESULT_NOT_INITIALISED;
    }
    call.size /= count;
    char* current = call.in.data();
    const AVParam& param = call.param;
    if (on[AP_DENOISE] && param.audioSampleRate == mProcessRate &&
        param.audioChannels == mChannels && param.audioSampleFmt == mFmt && sourceCount == 1) {
        const int code = mDenoise.Process(call.in.data(), call.out.data(), call.size);
        Log("DEBUG", "ProcessResample", "342", "[ASRC resample]denoise processed");
        if (code != RESULT_OK && code != RESULT_PASSED_THROUGH) {
            Log("ERROR", "ProcessResample", "345", "Error in audio denoise!!!");
            return code;
        }
        current = call.out.data();
    }
    if (on[AP_GAIN]) {
        mGain.Process(current, call.size);
        Log("DEBUG", "ProcessResample", "354", "[ASRC resample]AGC processed");
    }
    Copy(current, call.out.data(), call.size);
    return RESULT_RESAMPLED;
}

int PlainFilter::SyncProcessDelay(Call& call) {
    sourceCount = static_cast<int>(call.sources.size());
    if (call.nullIn || call.nullOut || call.size <= 0 || sourceCount == 0) {
        Log("ERROR", "SyncProcessDelay", "371",
            "Input nothing!!!inData = %d, outData = %d, size = %d, mSrcNum = %d",
            Low32(call.inAddress), Low32(call.outAddress), call.size, sourceCount);
        return RESULT_BAD_ARGUMENT;
    }
    if (Exceeds(call.size, sourceCount) || call.size % sourceCount != 0) {
        Log("ERROR", "SyncProcessDelay", "376", "Input parameter is error!!!");
        return RESULT_INVALID;
    }
    if (!mInited) {
        Log("ERROR", "SyncProcessDelay", "381", "Have not been initialized yet!!!");
        return RESULT_NOT_INITIALISED;
    }
    char* out = call.inPlace ? call.in.data() : call.out.data();
    if (sourceCount > 1 && on[AP_MIXING]) {
        const int code = mMixing.Process(call.in.data(), out, call.size, sourceCount);
        Log("DEBUG", "SyncProcessDelay", "396", "[ASRC delayed]Mix processed");
        return code;
    }
    call.size /= sourceCount;
    Copy(call.in.data(), out, call.size);
    return 0;
}
