#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <string>
#include <thread>

#include "tests/plugins/obs/obs_host.h"
#include "tests/plugins/obs/signals.h"

namespace audio_filter::obs {

namespace {

constexpr const char* kAllOff = R"({"suppression": -1})";
struct Rate {
    std::uint32_t rate;
    std::uint64_t latency;  ///< frames, of docs/stream.md
};

constexpr std::array<Rate, 6> kRates = {
    {{8000, 257}, {16000, 386}, {44100, 517}, {48000, 517}, {96000, 1290}, {192000, 2580}}};

TEST(ObsFilter, KeepsTheFramesAndMovesTheTimestampByTheLatency) {
    for (const auto& [rate, latency] : kRates) {
        SetAudio(rate, SPEAKERS_STEREO);
        FilteredSource source;
        std::uint64_t time = 5 * kSecond;
        for (const std::size_t frames : {1024U, 1U, 441U, 480U, 319U, 7U, 2048U}) {
            const Block out = source.Play(Noise(2, frames), time);
            EXPECT_EQ(out.samples[0].size(), frames);
            EXPECT_EQ(time - out.timestamp, latency * kSecond / rate) << rate << " Hz";
            time += audio_frames_to_ns(rate, frames);
        }
    }
}

TEST(ObsFilter, WithEverythingOffIsADelayToTheBitInEveryLayout) {
    for (const speaker_layout speakers :
         {SPEAKERS_MONO, SPEAKERS_STEREO, SPEAKERS_2POINT1, SPEAKERS_4POINT0, SPEAKERS_4POINT1,
          SPEAKERS_5POINT1, SPEAKERS_7POINT1}) {
        SetAudio(48000, speakers);
        FilteredSource source(kAllOff);
        const Channels in = Noise(get_audio_channels(speakers), 9600);
        EXPECT_EQ(source.PlayAll(in, 1024), Delayed(in, 517)) << "layout " << speakers;
    }
}

TEST(ObsFilter, LowersNoiseBy15DecibelsInEachOfEightChannels) {
    SetAudio(48000, SPEAKERS_7POINT1);
    FilteredSource source(R"({"suppression": 3})");
    const Channels in = Noise(8, 96000);
    const Channels out = source.PlayAll(in, 1024);
    for (std::size_t channel = 0; channel < in.size(); ++channel) {
        EXPECT_LT(Level(out[channel]), Level(in[channel]) - 15.0) << "channel " << channel;
    }
}

TEST(ObsFilter, AppliesSettingsWhileAudioRuns) {
    SetAudio(48000, SPEAKERS_MONO);
    FilteredSource source(kAllOff);
    const Channels in = Noise(1, 48000, 0.05F);
    EXPECT_NEAR(Level(source.PlayAll(in, 480)[0]), Level(in[0]), 0.1);
    source.Update(R"({"suppression": 3})");
    EXPECT_LT(Level(source.PlayAll(in, 480)[0]), Level(in[0]) - 15.0);
    source.Update(R"({"suppression": -1, "gain_on": true, "gain": 1.0})");
    EXPECT_GT(Level(source.PlayAll(in, 480)[0]), Level(in[0]) + 6.0);
    source.Update(R"({"gain_on": false})");
    EXPECT_NEAR(Level(source.PlayAll(in, 480)[0]), Level(in[0]), 0.1);
}

std::size_t LongestRunOfZeros(const std::vector<float>& samples) {
    std::size_t longest = 0;
    std::size_t run = 0;
    for (const float sample : samples) {
        run = sample == 0.0F ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

TEST(ObsFilter, LeavesNoGapWhileAnotherThreadChangesSettingsAndReadsReports) {
    SetAudio(48000, SPEAKERS_STEREO);
    FilteredSource source;
    source.PlayAll(Noise(2, 4800, 0.3F), 480);
    std::atomic<bool> playing = true;
    std::atomic<int> changes = 0;
    std::thread user([&source, &playing, &changes] {
        for (; playing; ++changes) {
            const std::string on = changes % 2 == 0 ? "true" : "false";
            source.Update((R"({"suppression": )" + std::to_string(changes % 5 - 1) +
                           R"(, "gain_on": )" + on + R"(, "phase_check": )" + on +
                           R"(, "music_detection": )" + on + "}")
                              .c_str());
            obs_properties_destroy(obs_source_properties(source.Filter()));
            FilterInfo().video_tick(obs_obj_get_data(source.Filter()), 0.0F);
        }
    });
    constexpr int kLeastChanges = 50;
    std::size_t longest = 0;
    for (int i = 0; i < 50 || changes < kLeastChanges; ++i) {
        for (const std::vector<float>& samples : source.PlayAll(Noise(2, 4800, 0.3F), 480)) {
            longest = std::max(longest, LongestRunOfZeros(samples));
        }
    }
    playing = false;
    user.join();
    EXPECT_LE(longest, 8U);
}

TEST(ObsFilter, PlaysNoOldSoundAfterItWasSwitchedOffAndOn) {
    SetAudio(48000, SPEAKERS_MONO);
    FilteredSource source(kAllOff);
    source.PlayAll(Noise(1, 4800), 480);
    obs_source_set_enabled(source.Filter(), false);
    const Channels in = Noise(1, 4800, 0.5F);
    EXPECT_EQ(source.PlayAll(in, 480), in);
    obs_source_set_enabled(source.Filter(), true);
    EXPECT_EQ(source.PlayAll(in, 480), Delayed(in, 517));
}

TEST(ObsFilter, PlaysNoOldSoundAfterATimestampJumpsByMoreThanASecond) {
    SetAudio(48000, SPEAKERS_STEREO);
    FilteredSource source(kAllOff);
    source.Play(Noise(2, 4800), 10 * kSecond);
    const Channels in = Noise(2, 4800, 0.5F);
    EXPECT_EQ(source.Play(in, 12 * kSecond).samples, Delayed(in, 517));
    EXPECT_EQ(source.Play(in, 3 * kSecond).samples, Delayed(in, 517));
    EXPECT_NE(source.Play(in, 3 * kSecond + kSecond / 2).samples, Delayed(in, 517));
}

TEST(ObsFilter, TimestampsBelowTheLatencyBecomeZero) {
    SetAudio(48000, SPEAKERS_MONO);
    FilteredSource source;
    EXPECT_EQ(source.Call(Noise(1, 480), 0).timestamp, 0U);
    EXPECT_EQ(source.Call(Noise(1, 480), 10'000'000).timestamp, 0U);
    EXPECT_EQ(source.Call(Noise(1, 480), 20'000'000).timestamp,
              20'000'000U - 517 * kSecond / 48000);
}

TEST(ObsFilter, CorrectsAReversedChannelAndLogsIt) {
    SetAudio(48000, SPEAKERS_STEREO);
    FilteredSource source(R"({"suppression": -1, "phase_check": true})");
    Channels in = Noise(1, 96000, 0.3F);
    in.push_back(in[0]);
    std::transform(in[1].begin(), in[1].end(), in[1].begin(), [](float x) { return -x; });
    const Channels out = source.PlayAll(in, 1024);
    EXPECT_TRUE(std::equal(out[0].end() - 48000, out[0].end(), out[1].end() - 48000));
    TakeLog();
    FilterInfo().video_tick(obs_obj_get_data(source.Filter()), 0.0F);
    EXPECT_EQ(TakeLog(),
              "[audio_filter: 'cleaner'] left channel reversed: its polarity is inverted\n");
}

TEST(ObsFilter, ReportsLatencyAndReductionToScripts) {
    SetAudio(44100, SPEAKERS_STEREO);
    FilteredSource source(R"({"suppression": 3})");
    source.PlayAll(Noise(2, 44100), 1024);
    calldata_t report = {};
    ASSERT_TRUE(
        proc_handler_call(obs_source_get_proc_handler(source.Filter()), "get_report", &report));
    EXPECT_EQ(calldata_int(&report, "latency"), 517);
    EXPECT_FALSE(calldata_bool(&report, "music"));
    EXPECT_GT(calldata_float(&report, "reduction"), 6.0);
    calldata_free(&report);
}

}  // namespace

}  // namespace audio_filter::obs
