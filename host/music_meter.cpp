#include "host/music_meter.h"

template <typename Sample>
MusicMeter<Sample>::MusicMeter(const AudioFormat& format) : mFormat(format) {
    mClassifier.Init(static_cast<unsigned short>(format.channels), format.sampleRate,
                     format.samples == SampleFormat::kS16 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT);
}

template <typename Sample>
void MusicMeter<Sample>::Add(std::vector<Sample> block) {
    if (mClassifier.MusicCheck(reinterpret_cast<unsigned char*>(block.data()),
                               static_cast<unsigned int>(block.size() * sizeof(Sample)))) {
        mMusicFrames += static_cast<std::int64_t>(block.size()) / mFormat.channels;
    }
}

template class MusicMeter<short>;
template class MusicMeter<float>;
