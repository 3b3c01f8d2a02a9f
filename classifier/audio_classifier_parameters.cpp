#include "classifier/audio_classifier.h"

namespace {

/// The centres result from clustering recordings of speech (centre 0) and of music, and are the same
/// at every rate.
constexpr algoParam At(unsigned short sampleRate, unsigned short frameLength) {
    return {.emphasis = 0.97F,
            .sampleRate = sampleRate,
            .frameLength = frameLength,
            .hop = frameLength / 2U,
            .lowEnergyCentres = {{0.6053148F, 0.4758569F, 0.5041184F, 0.4928913F},
                                 {0.5031464F, 0.3197466F, 0.021431416F, 0.0018134319F},
                                 {0.4163694F, 0.17555885F, 0.00031987220F, 0.00063671707F},
                                 {0.34069502F, 0.07078985F, 0.00023990399F, 0.00062059797F}},
            .lowEnergyThresholds = {0.5F, 0.25F, 0.125F, 0.0625F},
            .subBandCentres = {{0.0877454F, 0.13847956F, 0.6936577F},
                               {0.025687426F, 0.3597695F, 0.58953154F},
                               {0.0184962F, 0.692762F, 0.173328F},
                               {0.01242895F, 0.6725795F, 0.195659F}},
            .bandStart = sampleRate / 2U,
            .fftSize = 2U * sampleRate - 2U};
}

}  // namespace

algoParam AudioClassifier::getAlgoParam(unsigned short sampleRate) {
    switch (sampleRate) {
        case 44100: return At(44100, 1412);
        case 48000: return At(48000, 1536);
        default: return At(32000, 1024);
    }
}
