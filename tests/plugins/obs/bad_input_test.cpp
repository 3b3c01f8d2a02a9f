#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <thread>

#include "tests/plugins/obs/obs_host.h"
#include "tests/plugins/obs/signals.h"

namespace audio_filter::obs {

namespace {

bool IsFinite(const Channels& channels) {
    for (const std::vector<float>& samples : channels) {
        for (const float sample : samples) {
            if (!std::isfinite(sample)) {
                return false;
            }
        }
    }
    return true;
}

TEST(ObsBadInput, UnsupportedRatesAreLoggedAndPassThroughUnchanged) {
    for (const std::uint32_t rate : {4000U, 7999U, 192001U, 384000U}) {
        SetAudio(rate, SPEAKERS_STEREO);
        TakeLog();
        FilteredSource source;
        EXPECT_NE(TakeLog().find("[audio_filter: 'cleaner'] " + std::to_string(rate) +
                                 " Hz with 2 channels is not supported (8000 to 192000 Hz, 1 to 8 "
                                 "channels): audio passes through unchanged"),
                  std::string::npos);
        const Channels in = Noise(2, 1024);
        const Block out = source.Play(in, kSecond);
        EXPECT_EQ(out.samples, in);
        EXPECT_EQ(out.timestamp, kSecond);
    }
}

/// OBS has no layout of 7 channels. A block then has more planes than channels.
TEST(ObsBadInput, AnUnknownLayoutIsLoggedAndPassesThroughUnchanged) {
    SetAudio(48000, static_cast<speaker_layout>(7));
    TakeLog();
    FilteredSource source;
    EXPECT_NE(TakeLog().find("48000 Hz with 0 channels is not supported"), std::string::npos);
    const Channels in = Noise(7, 1024);
    const Block out = source.Call(in, kSecond);
    EXPECT_EQ(out.samples, in);
    EXPECT_EQ(out.timestamp, kSecond);
}

TEST(ObsBadInput, BlocksWithoutAPlanePassThroughUnchanged) {
    SetAudio(48000, SPEAKERS_5POINT1);
    FilteredSource source;
    const Channels in = Noise(5, 1024);
    EXPECT_EQ(source.Call(in, kSecond).samples, in);
}

TEST(ObsBadInput, SamplesThatAreNotFiniteNeverComeOut) {
    SetAudio(48000, SPEAKERS_STEREO);
    for (const char* settings :
         {R"({"suppression": -1})", R"({"suppression": 3})",
          R"({"suppression": 3, "gain_on": true, "phase_check": true, "music_detection": true})"}) {
        FilteredSource source(settings);
        for (const float bad :
             {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
              -std::numeric_limits<float>::infinity()}) {
            Channels in = Noise(2, 4800);
            in[0][100] = bad;
            std::fill(in[1].begin() + 1000, in[1].begin() + 2000, bad);
            EXPECT_TRUE(IsFinite(source.PlayAll(in, 1024))) << settings;
        }
        const Channels after = source.PlayAll(Noise(2, 9600), 1024);
        EXPECT_TRUE(IsFinite(after));
        EXPECT_GT(Level(after[1]), -60.0) << "no sound after " << settings;
    }
}

TEST(ObsBadInput, BlocksMayHoldNoFrameOrMoreThanTheStreamTakesAtOnce) {
    SetAudio(48000, SPEAKERS_STEREO);
    FilteredSource source(R"({"suppression": -1})");
    EXPECT_TRUE(source.Call(Channels(2), kSecond).samples[0].empty());
    EXPECT_TRUE(source.Call({}, kSecond).samples.empty());
    Channels in = Noise(2, 100000);
    EXPECT_EQ(source.Play(in, kSecond).samples, Delayed(in, 517));
    in = Noise(2, 500000);
    EXPECT_EQ(source.Call(in, 10 * kSecond).samples, Delayed(in, 517));
}

TEST(ObsBadInput, SettingsOutOfRangeAreClampedLoggedAndShownClamped) {
    SetAudio(48000, SPEAKERS_MONO);
    TakeLog();
    FilteredSource source(R"({"suppression": 9000000000, "gain": -1e300})");
    const std::string log = TakeLog();
    EXPECT_NE(
        log.find(
            "[audio_filter: 'cleaner'] suppression 9e+09 is out of range (-1 to 3): 3 is used\n"),
        std::string::npos)
        << log;
    EXPECT_NE(
        log.find("[audio_filter: 'cleaner'] gain -1e+300 is out of range (0 to 1): 0 is used\n"),
        std::string::npos)
        << log;
    obs_data_t* settings = obs_source_get_settings(source.Filter());
    EXPECT_EQ(obs_data_get_int(settings, "suppression"), 3);
    EXPECT_EQ(obs_data_get_double(settings, "gain"), 0.0);
    source.Update(R"({"suppression": -5, "gain": 1.01})");
    EXPECT_EQ(obs_data_get_int(settings, "suppression"), -1);
    EXPECT_EQ(obs_data_get_double(settings, "gain"), 1.0);
    TakeLog();
    source.Update(R"({"suppression": 0, "gain": 0.25})");
    EXPECT_EQ(TakeLog(), "");
    obs_data_set_double(settings, "gain", std::nan(""));
    obs_source_update(source.Filter(), nullptr);
    EXPECT_EQ(obs_data_get_double(settings, "gain"), 0.0);
    EXPECT_NE(TakeLog().find("gain nan is out of range"), std::string::npos);
    obs_data_release(settings);
}

struct Memory {
    long obsAllocations;
    long bytes;
};

/// What is in use once OBS has freed what was released, which it does in threads of its own.
Memory MemoryInUse() {
    WaitForDestruction();
    TakeLog();
    Memory least = {std::numeric_limits<long>::max(), std::numeric_limits<long>::max()};
    for (int i = 0; i < 100; ++i) {
        const auto heap = mallinfo2();
        least.obsAllocations = std::min(least.obsAllocations, bnum_allocs());
        least.bytes = std::min(least.bytes, static_cast<long>(heap.uordblks + heap.hblkhd));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return least;
}

/// 200 calls, after as many to warm up. @param limit of what they leave behind
template <typename Call>
void ExpectNoGrowth(const char* what, Memory limit, Call call) {
    std::array<Memory, 2> used = {};
    for (Memory& memory : used) {
        for (int i = 0; i < 200; ++i) {
            call();
        }
        memory = MemoryInUse();
    }
    std::printf("200 %s: bnum_allocs() from %ld to %ld, heap from %ld to %ld bytes\n", what,
                used[0].obsAllocations, used[1].obsAllocations, used[0].bytes, used[1].bytes);
    EXPECT_LE(used[1].obsAllocations, used[0].obsAllocations + limit.obsAllocations);
    EXPECT_LE(used[1].bytes, used[0].bytes + limit.bytes);
}

TEST(ObsBadInput, TwoHundredFiltersLeaveNoMemoryBehind) {
    SetAudio(48000, SPEAKERS_7POINT1);
    const Channels in = Noise(8, 1024);
    ExpectNoGrowth("filters", {0, 3000}, [] {
        obs_source_t* filter = obs_source_create_private("audio_filter", "cleaner", nullptr);
        obs_source_release(filter);
    });
    // OBS's audio thread lists the sources that exist at a time: memory that it keeps.
    ExpectNoGrowth("sources with a filter", {10, 6000}, [&in] {
        FilteredSource source(R"({"suppression": 2, "music_detection": true})");
        source.Play(in, kSecond);
    });
}

}  // namespace

}  // namespace audio_filter::obs
