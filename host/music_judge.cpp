#include "host/music_judge.h"

template <typename Sample>
MusicJudge<Sample>::MusicJudge(const AudioFormat& format) : mFormat(format) {
    mClassifier.Init(static_cast<unsigned short>(format.channels), format.sampleRate,
                     format.samples == SampleFormat::kS16 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT);
}

template <typename Sample>
void MusicJudge<Sample>::Add(std::vector<Sample> block) {
    if (mClassifier.MusicCheck(reinterpret_cast<unsigned char*>(block.data()),
                               static_cast<unsigned int>(block.size() * sizeof(Sample)))) {
        mMusicFrames += static_cast<std::int64_t>(block.size()) / mFormat.channels;
    }
}

template class MusicJudge<short>;
template class MusicJudge<float>;
