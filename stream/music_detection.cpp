#include "stream/music_detection.h"

#include <algorithm>

#include "stream/fade.h"

namespace audio_filter::internal {

MusicDetection::MusicDetection(int sampleRate) {
    if (sampleRate != kRate) {
        mResampler.emplace(sampleRate, kRate);
    }
    mClassifier.Init(1, kRate, SAMPLE_FMT_S16);
}

bool MusicDetection::Process(std::span<const float> samples) {
    std::array<float, kMaxBlockFrames> finite;
    std::transform(samples.begin(), samples.end(), finite.begin(), FiniteOr0);
    const std::span<const float> in = std::span(finite).first(samples.size());
    if (mResampler) {
        std::array<float, kMaxResampled> resampled;
        Gather(std::span(resampled).first(mResampler->Process(in, resampled)));
    } else {
        Gather(in);
    }
    return mIsMusic;
}

void MusicDetection::Gather(std::span<const float> samples) {
    for (const float sample : samples) {
        mBlock[mGathered++] = sample;
        if (mGathered == kBlock) {
            std::array<short, kBlock> block;
            mToS16.Convert(mBlock, block);
            mIsMusic = mClassifier.MusicCheck(reinterpret_cast<unsigned char*>(block.data()),
                                              sizeof(block));
            mGathered = 0;
        }
    }
}

}  // namespace audio_filter::internal
