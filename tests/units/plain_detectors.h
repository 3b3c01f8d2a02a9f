#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "units/phase_check.h"

/// Reference model of both detectors of PhaseCheck, frame by frame.
struct PlainDetectors {
    int rate = 0;
    bool planar = false;
    std::uint64_t inPhase = 0, opposed = 0, silence = 0, total = 0;
    long long score = 0, score2 = 0;
    float share = 0.0F;
    bool invert = false;

    template <typename Sample>
    static int Classify(Sample l, Sample r) {  // 0 silent, 1 in phase, 2 opposed
        const double bound = std::is_same_v<Sample, short> ? 491.5 : 0.016;
        if (std::abs(static_cast<double>(l)) < bound && std::abs(static_cast<double>(r)) < bound) {
            return 0;
        }
        return static_cast<double>(l) * static_cast<double>(r) > 0 ? 1 : 2;
    }

    template <typename Sample>
    void Run(std::vector<Sample>& s, bool second) {
        const std::size_t frames = s.size() / 2;
        const bool negate = second ? (invert && score2 > rate * 3) || score2 > rate * 6
                                   : static_cast<double>(share) > 0.7;
        invert = second ? negate : invert;
        for (std::size_t i = 0; i < frames; ++i) {
            Sample& left = planar ? s[i] : s[2 * i];
            const Sample right = planar ? s[i + frames] : s[2 * i + 1];
            const int what = Classify(left, right);
            if (second) {
                const bool opposite = static_cast<double>(left) * static_cast<double>(right) < 0;
                score2 += what == 2 && opposite ? 1 : what == 1 ? -1 : 0;
                score2 = score2 < 0 ? 0 : score2 > rate * 10 ? rate * 10 : score2;
            } else {
                ++total;
                silence += what == 0 ? 1 : 0;
                inPhase += what == 1 ? 1 : 0;
                opposed += what == 2 ? 1 : 0;
                score += what == 0 ? 0 : (what == 2) != negate ? 1 : -1;
            }
            if (negate && (std::is_same_v<Sample, float> || left != Sample(-32768))) {
                left = static_cast<Sample>(-left);
            }
        }
        if (!second) {
            Decide<Sample>();
        }
    }

    template <typename Sample>
    void Decide() {
        const float in = static_cast<float>(inPhase);
        const float out = static_cast<float>(opposed);
        const float all = static_cast<float>(total);
        const float byRates = (out / all) / (out / all + in / all);
        const float byCounts = out / static_cast<float>(inPhase + opposed);
        share = static_cast<double>(inPhase + opposed) > rate * 0.5
                    ? std::is_same_v<Sample, short> ? byRates : byCounts
                    : 0.0F;
        if (score > rate * 20) {
            inPhase = opposed = silence = total = 0;
            score = 0;
        }
        score = score < 0 ? 0 : score;
    }
};

inline void ExpectSameDetectors(const PhaseCheck& check, const PlainDetectors& plain) {
    ASSERT_EQ(check.mTotal, plain.total);
    ASSERT_EQ(check.mInPhase, plain.inPhase);
    ASSERT_EQ(check.mOpposed, plain.opposed);
    ASSERT_EQ(check.mSilence, plain.silence);
    ASSERT_EQ(check.mScore, plain.score);
    ASSERT_EQ(check.mScore2, plain.score2);
    ASSERT_EQ(check.mOpposedShare, plain.share);
    ASSERT_EQ(check.mInvert, plain.invert);
}
