#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "units/audio_denoise.h"

// Reference model of the classifier in plain loops, one step after another.

/// The magnitudes of the elements 0..size / 2 of the radix-2 transform.
inline std::vector<float> PlainSpectrum(const std::vector<float>& signal, std::size_t size) {
    std::vector<float> samples(size, 0.0F);
    std::copy(signal.begin(),
              signal.begin() + static_cast<std::ptrdiff_t>(std::min(signal.size(), size)),
              samples.begin());
    unsigned bits = 2;
    while ((size >> bits) != 0) {
        ++bits;
    }
    std::vector<std::size_t> table(size, 0);
    std::vector<float> re(3 * size + 1, 0.0F);
    std::vector<float> im(3 * size + 1, 0.0F);
    for (std::size_t i = 0; i < size; ++i) {
        if (i > 0) {
            table[i] = table[i / 2] / 2 + (i % 2) * (std::size_t{1} << (bits - 2));
        }
        re[i] = samples.at(table[i]);
    }
    for (std::size_t half = 1; half < size; half = 2 * half) {
        const float angle = std::acos(-1.0F) / static_cast<float>(half);
        const float cosine = std::cos(angle);
        const float sine = std::sin(angle);
        for (std::size_t s = 0; s < size; s += 2 * half) {
            float wRe = 1.0F;
            float wIm = 0.0F;
            for (std::size_t k = 0; k < half; ++k) {
                const std::size_t a = s + k;
                const std::size_t b = a + half;
                const float tRe = re.at(b) * wRe - im.at(b) * wIm;
                const float tIm = re.at(b) * wIm + im.at(b) * wRe;
                re[b] = re[a] - tRe;
                im[b] = im[a] - tIm;
                re[a] = re[a] + tRe;
                im[a] = im[a] + tIm;
                const float turned = wRe * cosine - wIm * sine;
                wIm = wRe * sine + wIm * cosine;
                wRe = turned;
            }
        }
    }
    std::vector<float> magnitudes(size / 2 + 1);
    for (std::size_t i = 0; i < magnitudes.size(); ++i) {
        magnitudes[i] = std::sqrt(re[i] * re[i] + im[i] * im[i]);
    }
    return magnitudes;
}

/// The vote over all past raw verdicts, the oldest first.
inline bool PlainVote(const std::vector<bool>& past, bool current, std::size_t length) {
    if (length == 0 || past.size() < length) {
        return current;
    }
    const auto weight = static_cast<float>(1.0 / (static_cast<double>(length) + 1.0));
    float scores[2] = {0.0F, 0.0F};
    float run = 0.0F;
    for (std::size_t i = past.size() - length; i < past.size(); ++i) {
        const bool repeats = i > past.size() - length && past[i] == past[i - 1];
        run = repeats ? run + 1.0F : 1.0F;
        scores[past[i] ? 1 : 0] += run * weight;
    }
    scores[current ? 1 : 0] += weight;
    return scores[1] > scores[0];
}

inline constexpr float kPlainLowEnergyCentres[4][4] = {
    {0.6053148F, 0.4758569F, 0.5041184F, 0.4928913F},
    {0.5031464F, 0.3197466F, 0.021431416F, 0.0018134319F},
    {0.4163694F, 0.17555885F, 0.00031987220F, 0.00063671707F},
    {0.34069502F, 0.07078985F, 0.00023990399F, 0.00062059797F}};
inline constexpr float kPlainSubBandCentres[4][3] = {{0.0877454F, 0.13847956F, 0.6936577F},
                                                     {0.025687426F, 0.3597695F, 0.58953154F},
                                                     {0.0184962F, 0.692762F, 0.173328F},
                                                     {0.01242895F, 0.6725795F, 0.195659F}};

struct PlainClassifier {
    PlainClassifier(unsigned channelCount, int sampleRate, SampleFmt fmt)
        : channels(channelCount), format(fmt), rate(static_cast<std::size_t>(sampleRate)) {
        denoise.Init(32000, 1, fmt, 3);
        denoised.resize(rate * channels * 4 * Width() + 1280);
        history.resize(rate * 4 * Width());
        frameLength = rate == 44100 ? 1412 : rate == 48000 ? 1536 : 1024;
        bandStart = rate == 44100 || rate == 48000 ? rate / 2 : 16000;
    }

    bool Integer() const { return format == SAMPLE_FMT_S16; }
    std::size_t Width() const { return Integer() ? 2 : 4; }
    std::size_t Hop() const { return frameLength / 2; }
    bool Full() const { return gathered >= 60 * Hop() + frameLength; }

    bool Check(const unsigned char* block, std::size_t bytes) {
        const std::size_t buffered = std::min(channels, 2U);
        const std::size_t samples = std::min(bytes / channels / Width(), 4 * rate * buffered);
        Denoise(block, samples);
        if (!Full()) {
            Append(std::min(samples, rate * 4 - gathered));
            return smoothed;
        }
        raw = Analyse();
        smoothed = PlainVote(past, raw, 30);
        past.push_back(raw);
        gathered = 0;
        return smoothed;
    }

    void Denoise(const unsigned char* block, std::size_t samples) {
        std::vector<char> mono(block, block + samples * Width());
        if (channels == 2) {
            for (std::size_t i = 0; i < samples; ++i) {
                std::memcpy(&mono[i * Width()], block + 2 * i * Width(), Width());
            }
        }
        if (channels <= 2) {
            int size = static_cast<int>(mono.size());
            denoise.Process(mono.data(), reinterpret_cast<char*>(denoised.data()), size);
        }
    }

    void Append(std::size_t samples) {
        for (std::size_t i = 0; i < samples; ++i) {
            std::int16_t stored = 0;
            if (Integer()) {
                std::memcpy(&stored, &denoised[2 * i], 2);
            } else {
                float sample = 0.0F;
                std::memcpy(&sample, &denoised[4 * i], 4);
                if (std::fabs(sample) < 2e9F) {
                    stored = static_cast<std::int16_t>(static_cast<long>(sample));
                }
            }
            std::memcpy(&history[2 * (gathered + i)], &stored, 2);
        }
        gathered += samples;
    }

    bool Analyse() const {
        std::vector<float> x(gathered, 0.0F);
        for (std::size_t n = 0; n < gathered % 65536; ++n) {
            std::int16_t integer = 0;
            std::memcpy(&integer, &history[2 * n], 2);
            x[n] = static_cast<float>(integer);
            if (!Integer()) {
                std::memcpy(&x[n], &history[4 * n], 4);
            }
        }
        std::vector<float> y(gathered, 0.0F);
        for (std::size_t n = 0; n < gathered % 65536; ++n) {
            y[n] = x[n] - 0.97F * (n == 0 ? 0.0F : x[n - 1]);
        }
        return !QuietLikeSpeech(y) && SpreadLikeMusic(y);
    }

    bool QuietLikeSpeech(const std::vector<float>& y) const {
        const std::size_t segments = (gathered - frameLength) / Hop() + 1;
        std::vector<double> energies(segments, 0.0);
        double sum = 0.0;
        for (std::size_t k = 0; k < segments; ++k) {
            for (std::size_t i = 0; i < frameLength; ++i) {
                const std::size_t mirrored = std::min(i, frameLength - 1 - i);
                const float turn = 2.0F * std::acos(-1.0F);
                const float angle =
                    static_cast<float>(mirrored) * turn / static_cast<float>(frameLength - 1);
                const auto w = static_cast<float>(0.54 - 0.46 * static_cast<double>(cosf(angle)));
                const float windowed = y[k * Hop() + i] * w;
                energies[k] += std::pow(static_cast<double>(windowed), 2.0);
            }
            sum += energies[k];
        }
        const double mean = sum / static_cast<double>(segments);
        for (int row = 3; row >= 0; --row) {
            const double limit = mean * (0.5 / (1 << row));
            int low = 0;
            for (const double energy : energies) {
                low += energy < limit ? 1 : 0;
            }
            const float rateOfLow = static_cast<float>(low) / static_cast<float>(segments);
            float nearest = 1.0F;
            float distances[4];
            for (int j = 0; j < 4; ++j) {
                const float difference = rateOfLow - kPlainLowEnergyCentres[row][j];
                distances[j] =
                    static_cast<float>(std::sqrt(std::pow(static_cast<double>(difference), 2.0)));
                if (distances[j] < nearest) {
                    nearest = distances[j];
                }
            }
            if (distances[0] == nearest) {
                return true;
            }
        }
        return false;
    }

    bool SpreadLikeMusic(const std::vector<float>& y) const {
        const std::size_t b = bandStart;
        const std::vector<float> magnitudes = PlainSpectrum(y, 4 * b - 2);
        double total = 0.0;
        double bands[3] = {0.0, 0.0, 0.0};
        for (std::size_t k = b; k < 2 * b; ++k) {
            const double power = std::pow(static_cast<double>(magnitudes[k]), 2.0);
            total += power;
            if (8 * k < 9 * b - 9 * b % 8) {
                bands[0] += power;
            }
            if (k >= 5 * b / 4 && k < 3 * b / 2) {
                bands[1] += power;
            }
            if (k >= 3 * b / 2) {
                bands[2] += power;
            }
        }
        int chosen = 0;
        float least = 0.0F;
        for (int k = 0; k < 4; ++k) {
            double sum = 0.0;
            for (int i = 0; i < 3; ++i) {
                const float difference =
                    static_cast<float>(bands[i] / total) - kPlainSubBandCentres[k][i];
                sum += std::pow(static_cast<double>(difference), 2.0);
            }
            const auto far = static_cast<float>(std::sqrt(sum));
            if (k == 0 || least >= far) {
                chosen = k;
                least = far;
            }
        }
        return chosen != 0;
    }

    unsigned channels;
    SampleFmt format;
    std::size_t rate;
    std::size_t frameLength = 0;
    std::size_t bandStart = 0;
    AudioDenoise denoise;
    std::vector<unsigned char> denoised;
    std::vector<unsigned char> history;
    std::size_t gathered = 0;
    bool raw = false;
    bool smoothed = false;
    std::vector<bool> past;
};
