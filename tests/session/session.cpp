/// A scripted session of 60 seconds of audio, the same on every system: streams of random rates,
/// formats, channels and sources, with changing switches and parameters. Writes the results into a
/// folder:
///   s16     16-bit output, as bytes
///   f32     float output, as bytes
///   text    codes, sizes, events and log lines; dates and addresses are masked
/// The random generator gives the same numbers everywhere, and no signal uses a function of the C
/// library, whose last bits differ between systems.

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "common/result_code.h"
#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"

namespace {

constexpr int kSeconds = 60;

class Session : private FilterListener {
public:
    explicit Session(const std::string& folder)
        : mFolder(folder),
          mS16(folder + "/s16", std::ios::binary),
          mF32(folder + "/f32", std::ios::binary),
          mText(folder + "/text") {
        PRFileLogParam param = {folder + "/log", 1, 0};
        pr_log->AddLog(PROCESS_LOG_FILE, &param, PROCESS_LOG_DEBUG);
        PR_LOG_ENABLE(true);
        mFilter.SetListener(this);
    }

    bool Run() {
        for (double seconds = 0.0; seconds < kSeconds;) {
            Start();
            const int blocks = 20 + Random(150);
            for (int block = 0; block < blocks; ++block) {
                seconds += Block();
            }
        }
        mFilter.Clear();
        PR_LOG_ENABLE(false);
        pr_log->RemoveAllLog();
        AppendLog();
        return mS16.good() && mF32.good() && mText.flush().good();
    }

private:
    int Random(int below) { return static_cast<int>(mRandom() % static_cast<unsigned>(below)); }

    template <std::size_t Size>
    int OneOf(const int (&values)[Size]) {
        return values[Random(static_cast<int>(Size))];
    }

    void OnEvent(int code, std::string text) override {
        mText << "event " << code << " " << text << "\n";
    }

    void Start() {
        mRate = OneOf({8000, 16000, 32000, 32000, 44100, 44100, 48000, 22050});
        mChannels = 1 + Random(2);
        mFmt = OneOf({1, 1, 1, 3, 3, 6, 8});
        mTone = 1 + Random(200);
        mOpposed = Random(2) == 0;
        ProcessSwitchMap switches = Switches();
        const int code = mFilter.Init(mRate, mChannels, static_cast<SampleFmt>(mFmt), &switches);
        mText << "init " << mRate << " " << mChannels << " " << mFmt << ": " << code << "\n";
    }

    ProcessSwitchMap Switches() {
        ProcessSwitchMap switches;
        for (const ProcessType kind : {AP_DENOISE, AP_PHASE_CHECK, AP_GAIN, AP_MIXING}) {
            switches[kind] = Random(4) != 0;
        }
        return switches;
    }

    /// A triangle wave in noise of varying level; some streams have a reversed second channel.
    int Sample(int channel) {
        mPhase += channel == 0 ? mTone : 0;
        const int ramp = mPhase % 2048;
        const int triangle = (ramp < 1024 ? ramp : 2047 - ramp) * 16 - 8192;
        const int swell = mPhase / 2048 % 16;
        const int value = triangle * swell / 16 + Random(600) - 300;
        mLatest = channel == 0 ? value : mLatest;
        return channel == 1 && mOpposed ? -mLatest : value;
    }

    bool IsFloat() const { return mFmt == 3 || mFmt == 8; }

    std::vector<char> Input(int frames) {
        const std::size_t width = IsFloat() ? 4 : 2;
        std::vector<char> bytes;
        for (int i = 0; i < frames * mChannels; ++i) {
            const auto s16 = static_cast<short>(Sample(i % mChannels));
            const float f32 = static_cast<float>(s16) / 32768.0F;
            char sample[4];
            IsFloat() ? std::memcpy(sample, &f32, 4) : std::memcpy(sample, &s16, 2);
            bytes.insert(bytes.end(), sample, sample + width);
        }
        return bytes;
    }

    /// @return seconds of audio
    double Block() {
        Tune();
        std::vector<AVSourceType> sources(static_cast<std::size_t>(OneOf({1, 1, 1, 2, 3})));
        for (AVSourceType& source : sources) {
            source = static_cast<AVSourceType>(Random(3) == 0 ? 1 + Random(3) : 0);
        }
        const auto count = static_cast<int>(sources.size());
        const int frames = Random(4) == 0 ? 1 + Random(mRate / 10) : mRate / 100;
        std::vector<char> in = Input(frames * count);
        std::vector<char> out(in.size() + 320 * 8);
        int size = static_cast<int>(in.size());
        AVParam param;
        int code = mFilter.Process(in.data(), out.data(), size, sources, param, 0);
        mText << "process " << count << ": " << code << ", " << size << "\n";
        if (code == RESULT_NEEDS_RESAMPLING) {
            std::vector<char> resampled(out.begin(), out.begin() + size);
            code = mFilter.ProcessResample(resampled.data(), out.data(), size, {sources.front()},
                                           param, 0);
            mText << "resample " << param.audioSampleRate << ": " << code << ", " << size << "\n";
        }
        (IsFloat() ? mF32 : mS16).write(out.data(), size);
        return static_cast<double>(frames) / mRate;
    }

    void Tune() {
        if (Random(20) == 0) {
            ProcessSwitchMap switches = Switches();
            mFilter.SetMethod(&switches);
        }
        if (Random(20) == 0) {
            ProcessParam param = {static_cast<float>(Random(11)) / 10.0F, Random(5) - 1};
            const bool taken = mFilter.SetParameter(&param, Random(2) == 0 ? AP_GAIN : AP_DENOISE);
            mText << "parameter " << taken << "\n";
        }
    }

    /// Replaces addresses by "*".
    static std::string Masked(std::string line) {
        for (const std::string label : {"in:", "out:", "outData:"}) {
            for (std::size_t at = line.find(label); at != std::string::npos;
                 at = line.find(label, at + 1)) {
                const std::size_t start = at + label.size();
                const std::size_t end = line.find_first_not_of("-0123456789", start);
                line = line.substr(0, start).append("*").append(
                    end == std::string::npos ? "" : line.substr(end));
            }
        }
        return line;
    }

    void AppendLog() {
        std::ifstream log(mFolder + "/log_0");
        for (std::string line; std::getline(log, line);) {
            mText << Masked(line.substr(line.find('['))) << "\n";
        }
    }

    std::string mFolder;
    std::ofstream mS16;
    std::ofstream mF32;
    std::ofstream mText;
    std::mt19937 mRandom{20240307};
    AudioFilter mFilter;
    int mRate = 0;
    int mChannels = 0;
    int mFmt = 0;
    int mTone = 0;
    bool mOpposed = false;
    int mPhase = 0;
    int mLatest = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "session FOLDER\n";
        return 2;
    }
    static Session session(argv[1]);
    return session.Run() ? 0 : 1;
}
