#include <gtest/gtest.h>
#include <malloc.h>

#include <functional>
#include <memory>
#include <vector>

#include "common/result_code.h"
#include "support/bytes.h"
#include "support/fail_each.h"
#include "support/signals.h"
#include "units/audio_denoise.h"
#include "units/audio_gain.h"
#include "units/audio_mixing.h"
#include "units/ns_wrap.h"
#include "units/phase_check.h"
#include "units/suppressor.h"

using namespace audio_filter::internal;

namespace {

const std::vector<SampleFmt> kFormats = {SAMPLE_FMT_S16, SAMPLE_FMT_FLT, SAMPLE_FMT_S16P,
                                         SAMPLE_FMT_FLTP, SAMPLE_FMT_DBL};
const std::vector<int> kRates = {8000, 16000, 32000, 44100};

template <typename Sample>
std::vector<char> MadeNoise() {
    std::mt19937 random(1);
    const std::vector<Sample> samples = As<Sample>(NoisySpeech(random, 2 * 3200, 32000));
    return {BytesOf(samples), BytesOf(samples) + ByteCount(samples)};
}

const std::vector<char>& Noise(SampleFmt fmt) {
    static const std::vector<char> shorts = MadeNoise<short>();
    static const std::vector<char> floats = MadeNoise<float>();
    return fmt == SAMPLE_FMT_FLT || fmt == SAMPLE_FMT_FLTP ? floats : shorts;
}

/// Ten blocks of 320 samples; bytes of -1 for a call that does not return 0.
std::vector<char> BlocksOf(NSWrap& unit, SampleFmt fmt) {
    const std::vector<char>& in = Noise(fmt);
    const std::size_t block = fmt == SAMPLE_FMT_FLT ? 1280 : 640;
    std::vector<char> out(10 * block, -1);
    for (std::size_t k = 0; k < 10; ++k) {
        unit.Process(in.data() + k * block, out.data() + k * block);
    }
    return out;
}

std::vector<char> BlocksOf(AudioDenoise& unit, SampleFmt fmt) {
    const std::vector<char>& in = Noise(fmt);
    std::vector<char> out(in.size() + 8 * 320, -1);
    int size = static_cast<int>(in.size());
    out[0] = static_cast<char>(unit.Process(in.data(), out.data() + 1, size));
    out.resize(static_cast<std::size_t>(size) + 1);
    return out;
}

TEST(AllocationFaults, GainAndMixerAndPhaseCheckHaveNoAllocationThatCouldFail) {
    std::vector<char> in = Noise(SAMPLE_FMT_S16);
    std::vector<char> out(in.size());
    Allocations allocations;
    for (const SampleFmt fmt : kFormats) {
        AudioGain gain;
        gain.Init(fmt);
        gain.Process(in.data(), static_cast<int>(in.size()));
        AudioMixing mixing;
        mixing.Init(fmt);
        int size = static_cast<int>(in.size());
        mixing.Process(in.data(), out.data(), size, 2);
        for (const int rate : kRates) {
            PhaseCheck check;
            check.Init(rate, fmt > SAMPLE_FMT_DBL);
            check.Check(reinterpret_cast<short*>(out.data()), 640);
            check.Check2(reinterpret_cast<short*>(out.data()), 640);
            check.Clear();
        }
        gain.Clear();
        mixing.Clear();
    }
    EXPECT_EQ(allocations.Stop(), 0U);
}

/// The package writes to its instance without checking the result of malloc.
TEST(AllocationFaults, ASuppressorTestsForTheMemoryOfAnInstanceBeforeThePackageAllocatesIt) {
    using Created = std::unique_ptr<Suppressor>;
    const int failures = FailEach([] { return std::make_unique<Created>(); },
                                  [](Created& suppressor) {
                                      suppressor = Suppressor::Create();
                                      return suppressor ? 0 : -1;
                                  },
                                  [](Created& suppressor, int code) {
                                      EXPECT_EQ(code == 0, suppressor != nullptr);
                                      suppressor = Suppressor::Create();
                                      ASSERT_NE(suppressor, nullptr);
                                      EXPECT_TRUE(suppressor->Init(32000));
                                      EXPECT_LE(malloc_usable_size(suppressor->mHandle.get()),
                                                Suppressor::kInstanceBytes);
                                  });
    Report("Suppressor::Create", failures);
}

/// The package's own allocations never fail here, so only their absence shows that it was not called.
TEST(AllocationFaults, WithoutMemoryForAnInstanceThePackageIsNotCalled) {
    Allocations allocations;
    allocations.Fail(1, false);
    const std::unique_ptr<Suppressor> suppressor = Suppressor::Create();
    EXPECT_TRUE(allocations.FailNoMore());
    EXPECT_EQ(suppressor, nullptr);
}

/// @param before an earlier stream of the unit; null for none
int FailNSWrap(int rate, SampleFmt fmt, SampleFmt before) {
    NSWrap fresh;
    const bool accepted = fresh.Init(rate, fmt, 2);
    const std::vector<char> expected = BlocksOf(fresh, fmt);
    return FailEach(
        [&] {
            auto unit = std::make_unique<NSWrap>();
            if (before != SAMPLE_FMT_NONE) {
                unit->Init(32000, before, 3);
                BlocksOf(*unit, before);
            }
            return unit;
        },
        [&](NSWrap& unit) { return unit.Init(rate, fmt, 2) ? 0 : 1; },
        [&](NSWrap& unit, int code) {
            if (code != 0 && before != fmt) {
                std::vector<char> untouched(1280, 7);
                EXPECT_EQ(unit.Process(expected.data(), untouched.data()), RESULT_FAILURE);
                EXPECT_EQ(untouched, std::vector<char>(1280, 7));
            }
            EXPECT_EQ(unit.Init(rate, fmt, 2), accepted);
            if (before == fmt) {
                unit.Reset();  // a second Init keeps the filter memories
            }
            EXPECT_EQ(BlocksOf(unit, fmt), expected);
        });
}

TEST(AllocationFaults, AnNSWrapWhoseInitFailedIsNotInitialisedAndTheNextInitSucceeds) {
    int failures = 0;
    for (const SampleFmt fmt : kFormats) {
        for (const int rate : kRates) {
            failures += FailNSWrap(rate, fmt, SAMPLE_FMT_NONE);
        }
        failures += FailNSWrap(32000, fmt, SAMPLE_FMT_S16);
        failures += FailNSWrap(32000, fmt, SAMPLE_FMT_FLT);
    }
    Report("NSWrap::Init", failures);
}

/// @param before channels of an earlier stream of the unit; 0 for none
int FailAudioDenoise(int rate, int channels, SampleFmt fmt, int before) {
    AudioDenoise fresh;
    const int accepted = fresh.Init(rate, channels, fmt, 2);
    const std::vector<char> expected = BlocksOf(fresh, fmt);
    return FailEach(
        [&] {
            auto unit = std::make_unique<AudioDenoise>();
            if (before != 0) {
                unit->Init(32000, before, SAMPLE_FMT_S16, 3);
                BlocksOf(*unit, SAMPLE_FMT_S16);
            }
            return unit;
        },
        [&](AudioDenoise& unit) { return unit.Init(rate, channels, fmt, 2); },
        [&](AudioDenoise& unit, int code) {
            EXPECT_TRUE(code == kThrew || code == accepted);
            EXPECT_EQ(unit.IsInited(), code == 0);
            // A channel without a suppressor is initialised and silent.
            const char code0 = BlocksOf(unit, fmt).front();
            EXPECT_EQ(code0, code != kThrew ? expected.front() : channels > 2 ? 12 : 4);
            unit.Config(3);
            unit.Reset();
            EXPECT_EQ(unit.Init(rate, channels, fmt, 2), accepted);
            EXPECT_EQ(BlocksOf(unit, fmt), expected);
        });
}

TEST(AllocationFaults, AnAudioDenoiseWhoseInitThrewIsNotInitialisedAndTheNextInitSucceeds) {
    int failures = 0;
    for (const SampleFmt fmt : kFormats) {
        for (const int channels : {1, 2, 3}) {
            for (const int rate : kRates) {
                failures += FailAudioDenoise(rate, channels, fmt, 0);
            }
            failures += FailAudioDenoise(32000, channels, fmt, 1);
            failures += FailAudioDenoise(32000, channels, fmt, 2);
        }
    }
    Report("AudioDenoise::Init", failures);
}

}  // namespace
