#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "support/seed.h"
#include "support/signals.h"

/// The format and signal of one stream.
struct Stream {
    int rate = 32000;         ///< Hz
    int processRate = 32000;  ///< Hz, of the noise suppression
    bool handedBack = false;  ///< a different rate: the host resamples
    int channels = 1;
    SampleFmt fmt = SAMPLE_FMT_S16;
    int width = 2;         ///< bytes of a sample
    bool opposed = false;  ///< the right channel is the inverted left one, else a quieter copy
    bool tonal = false;
    std::vector<AVSourceType> sources;

    /// Samples per channel of the smallest block that leaves none buffered in the suppressor.
    int FramesPer10Ms() const { return (handedBack ? rate : processRate) / 100; }
    int BytesOf(std::int64_t frames) const { return static_cast<int>(frames * channels * width); }

    static Stream Random(std::mt19937& random) {
        struct Rate {
            int rate, processRate;
            bool handedBack;
        };
        static constexpr Rate kRates[] = {{8000, 8000, false},   {16000, 16000, false},
                                          {32000, 32000, false}, {32000, 32000, false},
                                          {44100, 32000, false}, {12000, 16000, true},
                                          {24000, 32000, true},  {48000, 32000, true},
                                          {48000, 32000, true},  {96000, 32000, true}};
        const Rate& rate = kRates[RandomInt(random, 0, 9)];
        Stream stream;
        stream.rate = rate.rate;
        stream.processRate = rate.processRate;
        stream.handedBack = rate.handedBack;
        stream.channels = RandomInt(random, 1, 2);
        const bool isFloat = RandomInt(random, 0, 1) == 1;
        stream.fmt = isFloat ? SAMPLE_FMT_FLT : SAMPLE_FMT_S16;
        stream.width = isFloat ? 4 : 2;
        stream.opposed = RandomInt(random, 0, 9) == 0;
        stream.tonal = RandomInt(random, 0, 9) == 0;
        stream.sources.resize(
            static_cast<std::size_t>(RandomInt(random, 0, 2) == 0 ? 1 : RandomInt(random, 1, 4)));
        for (AVSourceType& source : stream.sources) {
            source = static_cast<AVSourceType>(RandomInt(random, 0, 3));
        }
        stream.sources[0] = RandomInt(random, 0, 4) == 0 ? stream.sources[0] : AV_SOURCE_MICROPHONE;
        return stream;
    }
};

/// Endless audio for every stream, the same at the same position.
class Recording {
public:
    /// `frames` samples of every channel of every source, one source after another.
    std::vector<char> Blocks(const Stream& stream, std::int64_t position, int frames) const {
        std::vector<char> blocks(static_cast<std::size_t>(stream.BytesOf(frames)) *
                                 stream.sources.size());
        const std::vector<float>& voice = stream.tonal ? mMusic : mSpeech;
        char* to = blocks.data();
        for (std::size_t source = 0; source < stream.sources.size(); ++source) {
            for (int frame = 0; frame < frames; ++frame) {
                for (int channel = 0; channel < stream.channels; ++channel) {
                    const auto at = static_cast<std::size_t>(position + frame) + source * 7919U;
                    const float right = stream.opposed ? -1.0F : 0.7F;
                    to = Put(to, stream, voice[at % voice.size()] * (channel == 1 ? right : 1.0F));
                }
            }
        }
        return blocks;
    }

private:
    static char* Put(char* to, const Stream& stream, float value) {
        if (stream.width == 4) {
            std::memcpy(to, &value, sizeof(value));
        } else {
            const auto sample = static_cast<std::int16_t>(value * 32767.0F);
            std::memcpy(to, &sample, sizeof(sample));
        }
        return to + stream.width;
    }

    static std::vector<float> Speech() {
        std::mt19937 random(1);
        return NoisySpeech(random, 977'777, 32000.0);
    }
    static std::vector<float> Music() {
        std::vector<float> chords(977'777);
        for (std::size_t i = 0; i < chords.size(); ++i) {
            const double t = static_cast<double>(i) / 32000.0;
            const double root = 220.0 * (1.0 + 0.25 * static_cast<double>(i / 16000 % 4));
            chords[i] = static_cast<float>(0.2 * std::sin(6.2831853 * root * t) +
                                           0.2 * std::sin(6.2831853 * 1.5 * root * t) +
                                           0.1 * std::sin(6.2831853 * 9000.0 * t));
        }
        return chords;
    }

    const std::vector<float> mSpeech = Speech();
    const std::vector<float> mMusic = Music();
};
