#include "host/unit_chain.h"

#include <string>
#include <type_traits>

#include "host/failure.h"

namespace {

constexpr int kSuppressorRate = 32000;

/// The band filters' share of the delay, at speech frequencies.
constexpr std::int64_t kBandFilterDelay = 4;

void Require(int code, const char* unit) {
    if (code != 0) {
        throw Failure(std::string(unit) + " refused a block, code " + std::to_string(code));
    }
}

template <typename Sample>
int ByteCount(const std::vector<Sample>& samples) {
    return static_cast<int>(samples.size() * sizeof(Sample));
}

}  // namespace

int UnitChain::ProcessingRate(const ChainSettings& settings, int sampleRate) {
    const bool taken = sampleRate == 8000 || sampleRate == 16000 || sampleRate == kSuppressorRate ||
                       sampleRate == 44100;
    return taken || !settings.denoiseLevel ? sampleRate : kSuppressorRate;
}

UnitChain::UnitChain(const ChainSettings& settings, const AudioFormat& format)
    : mSettings(settings), mFormat(format) {
    const SampleFmt fmt = format.kind == SampleKind::kS16 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT;
    if (settings.phaseCheck && format.channels == 2) {
        mPhaseCheck.Init(format.sampleRate, false);  // stays off at rates that it does not take
    }
    if (settings.denoiseLevel) {
        const int rate = format.sampleRate > kSuppressorRate ? kSuppressorRate : format.sampleRate;
        Require(mDenoise.Init(rate, format.channels, fmt, *settings.denoiseLevel),
                "noise suppression");
    }
    if (settings.gain) {
        Require(mGain.Init(fmt), "gain");
        mGain.SetGain(*settings.gain);
    }
}

template <typename Sample>
std::vector<Sample> UnitChain::Process(std::vector<Sample> block) {
    if (block.empty()) {
        return block;
    }
    if (mPhaseCheck.IsInited()) {
        CheckPhase(block);
    }
    if (mDenoise.IsInited()) {
        block = Denoise(block);
    }
    if (mGain.IsInited() && !block.empty()) {
        ApplyGain(block);
    }
    return block;
}

template <typename Sample>
void UnitChain::CheckPhase(std::vector<Sample>& block) {
    const std::vector<Sample> before = block;
    Require(mPhaseCheck.Check(block.data(), static_cast<int>(block.size())), "phase check");
    if (block != before) {
        mCorrectedFrames += static_cast<std::int64_t>(block.size() / 2);
    }
}

template <typename Sample>
std::vector<Sample> UnitChain::Denoise(const std::vector<Sample>& block) {
    constexpr std::size_t kFrameSamples = kSuppressorRate / 100;
    std::vector<Sample> denoised(block.size() +
                                 kFrameSamples * static_cast<std::size_t>(mFormat.channels));
    int size = ByteCount(block);
    Require(mDenoise.Process(reinterpret_cast<const char*>(block.data()),
                             reinterpret_cast<char*>(denoised.data()), size),
            "noise suppression");
    denoised.resize(static_cast<std::size_t>(size) / sizeof(Sample));
    return denoised;
}

template <typename Sample>
void UnitChain::ApplyGain(std::vector<Sample>& block) {
    Require(mGain.Process(reinterpret_cast<const char*>(block.data()), ByteCount(block)), "gain");
}

/// The suppressor holds 96 samples of a band back (48 at 8000 Hz), which are 192 (96) of the
/// stream. At 8000 and 16000 Hz its frames are half padding, and that much less is held back of
/// what is fresh.
std::int64_t UnitChain::DelayFrames() const {
    if (!mSettings.denoiseLevel) {
        return 0;
    }
    switch (mFormat.sampleRate) {
        case 8000: return 96 - 80 + kBandFilterDelay;
        case 16000: return 192 - 160 + kBandFilterDelay;
        default: return 192 + kBandFilterDelay;
    }
}

template std::vector<short> UnitChain::Process(std::vector<short> block);
template std::vector<float> UnitChain::Process(std::vector<float> block);
