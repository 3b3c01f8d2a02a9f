// The stages that the single-source and the multi-source chain share.

#include <cstring>

#include "audio_filter/audio_filter.h"
#include "common/result_code.h"

bool AudioFilter::ChecksPhase() {
    return mSwitchState[AP_PHASE_CHECK] && mChannels == 2;
}

/// While music plays, noise is suppressed at level 0.
void AudioFilter::DetectMusic(char* data, int size) {
    if (!mMusicCheck || !mClassifier.IsInited()) {
        return;
    }
    mIsMusic.exchange(mClassifier.MusicCheck(reinterpret_cast<unsigned char*>(data),
                                             static_cast<unsigned int>(size)));
    mDenoise.Config(mIsMusic ? 0 : mDenoiseLevel);
}

/// Hands a block back unchanged, with the format that the suppressor requires.
int AudioFilter::RequestResampling(const char* data, char* outData, int size, AVParam& param) {
    std::memmove(outData, data, static_cast<std::size_t>(size));
    param.audioSampleRate = mProcessRate;
    param.audioChannels = mChannels;
    param.audioSampleFmt = mSampleFmt;
    return RESULT_NEEDS_RESAMPLING;
}
