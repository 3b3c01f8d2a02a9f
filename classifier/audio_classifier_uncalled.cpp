// Private routines of AudioClassifier that the pipeline never calls. They are exported with the
// class for callers that have access to its private members, and wrap the functions of segmentation.h,
// spectrum.h and features.h.

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <new>

#include "classifier/audio_classifier.h"
#include "classifier/features.h"
#include "classifier/segmentation.h"
#include "classifier/spectrum.h"
#include "common/pcm_view.h"
#include "common/sample_format.h"

using namespace audio_filter::internal;

namespace {

std::vector<double> Energies(float** segments, std::size_t length, std::size_t count) {
    std::vector<double> energies(count);
    std::transform(segments, segments + count, energies.begin(), [&](const float* segment) {
        return segment == nullptr ? 0.0 : SegmentEnergy({segment, length});
    });
    return energies;
}

}  // namespace

float* AudioClassifier::emphasis(unsigned char* in, unsigned short count, float coefficient) {
    auto* emphasised = new float[count]();
    if (IsS16(mFormat)) {
        Emphasise(PcmView<const std::int16_t>(in, count), coefficient, {emphasised, count});
    } else if (IsFloat(mFormat)) {
        Emphasise(PcmView<const float>(in, count), coefficient, {emphasised, count});
    }
    return emphasised;
}

float* AudioClassifier::hammingWindow(unsigned short length, float gain) {
    auto* window = new float[length];
    HammingWindow({window, length}, gain);
    return window;
}

void AudioClassifier::hadmanMulti(float* data, float* window, unsigned int length) {
    std::transform(data, data + length, window, data, std::multiplies<>());
}

float** AudioClassifier::frameSeg(float* signal, unsigned short signalLength,
                                  unsigned short frameLength, unsigned short hop) {
    CacheWindow(frameLength);
    mFrameCount = CountSegments(signalLength, frameLength, hop);
    void** rows = array2dCreate(mFrameCount, frameLength, sizeof(float));
    for (std::size_t j = 0; j < mFrameCount; ++j) {
        if (rows[j] != nullptr) {
            CutSegment({signal, signalLength}, j, hop, mWindow,
                       {static_cast<float*>(rows[j]), frameLength});
        }
    }
    return reinterpret_cast<float**>(rows);
}

float* AudioClassifier::fft(float* signal, unsigned int count, unsigned int size) {
    const std::size_t bins = size / 2 + 1;
    auto magnitudes = std::make_unique<float[]>(bins);
    Spectrum({signal, count}, size, {magnitudes.get(), bins});
    return magnitudes.release();
}

float* AudioClassifier::subBandEnergyRate(float* magnitudes) {
    const std::size_t start = getAlgoParam(static_cast<unsigned short>(mSampleRate)).bandStart;
    const std::array<float, 3> ratios = SubBandRatios({magnitudes, 2 * start}, start);
    auto* result = new float[ratios.size()];
    std::copy(ratios.begin(), ratios.end(), result);
    return result;
}

float AudioClassifier::distance(float* a, float* b, unsigned int n) {
    return Distance({a, n}, {b, n});
}

void** AudioClassifier::array2dCreate(unsigned int rows, unsigned int columns,
                                      unsigned long long elementSize) {
    auto** array = new void*[rows];
    for (unsigned int i = 0; i < rows; ++i) {
        array[i] = new (std::nothrow) char[columns * elementSize]();
    }
    return array;
}

void AudioClassifier::array2dDelete(void** rows, unsigned int rowCount) {
    for (unsigned int i = 0; i < rowCount; ++i) {
        delete[] static_cast<char*>(rows[i]);
    }
    delete[] rows;
}

float AudioClassifier::lowEnergyFrameRate(float** frames, unsigned short frameLength,
                                          unsigned int frameCount, float ratio) {
    return LowEnergyRate(Energies(frames, frameLength, frameCount), ratio);
}

bool AudioClassifier::musicCheckByLowEnergyFrameRate(float** frames, unsigned short frameLength,
                                                     unsigned int frameCount,
                                                     float* const thresholds,
                                                     float (*const centres)[4]) {
    return !IsSpeechByLowEnergy(Energies(frames, frameLength, frameCount), thresholds, centres);
}
