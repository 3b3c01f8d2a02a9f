/// The LV2 plug-in through its entry point. Replaces functions of the C library and is therefore a separate
/// executable.

#include <gtest/gtest.h>
#include <lv2/log/log.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <memory>

#include "audio_filter/audio_filter.h"
#include "plugin_host.h"
#include "support/allocations.h"
#include "support/posix/lock_calls.h"
#include "support/signals.h"

namespace audio_filter {

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Noisy speech, another one in each channel.
Channels Signal(int channels, std::size_t frames, double rate = 48000.0) {
    std::mt19937 random(5);
    Channels signal;
    for (int channel = 0; channel < channels; ++channel) {
        signal.push_back(NoisySpeech(random, frames, rate));
    }
    return signal;
}

void ChangeSettings(PluginHost& host, int round) {
    host.controls[kEnabledPort] = round % 4 == 3 ? 0.0F : 1.0F;
    host.controls[kSuppressionPort] = static_cast<float>(round % 7) - 2.0F;
    host.controls[kGainOnPort] = static_cast<float>(round % 2);
    host.controls[kGainPort] = round % 9 == 0 ? kNan : 0.1F * static_cast<float>(round % 13);
    host.controls[kPhaseCheckPort] = static_cast<float>(round % 3);
    host.controls[kMusicDetectionPort] = round % 5 == 0 ? 0.0F : 1.0F;
    host.controls[kHighBandPort] = static_cast<float>(round % 2);
}

TEST(Lv2Plugin, RunNeitherAllocatesNorLocksWhateverIsSet) {
    for (const double rate : {8000.0, 44100.0, 48000.0, 192000.0}) {
        for (const int channels : {1, 2}) {
            PluginHost host(channels, rate);
            Channels signal = Signal(channels, static_cast<std::size_t>(2.0 * rate), rate);
            const LockCalls calls;
            Allocations allocations;
            int round = 0;
            for (std::size_t at = 0; at + 4000 < signal[0].size(); ++round) {
                ChangeSettings(host, round);
                const std::size_t block = static_cast<std::size_t>(round * 397 % 4000);
                for (std::size_t channel = 0; channel < signal.size(); ++channel) {
                    float* const samples = signal[channel].data() + at;
                    host.ConnectAudio(channel, samples, samples);
                }
                host.Run(block);
                at += block;
            }
            EXPECT_EQ(allocations.Stop(), 0U) << rate << " Hz, " << channels;
            EXPECT_EQ(calls.Locks(), 0) << rate << " Hz, " << channels;
            EXPECT_EQ(calls.Waits(), 0) << rate << " Hz, " << channels;
        }
    }
}

TEST(Lv2Plugin, TheTrapsOfThisProgramCountAllocationsOfThePlugInAndLocksOfTheLibrary) {
    const LockCalls calls;
    Allocations allocations;
    { const PluginHost host(1, 48000.0); }
    EXPECT_GT(allocations.Stop(), 10U);
    AudioFilter().Clear();
    EXPECT_GT(calls.Locks(), 0);
}

TEST(Lv2Plugin, NotEnabledItReturnsTheInputLaterByTheReportedLatency) {
    for (const double rate : {8000.0, 16000.0, 44100.0, 48000.0, 96000.0, 192000.0}) {
        PluginHost host(2, rate);
        host.controls[kEnabledPort] = 0.0F;
        const Channels in = Signal(2, static_cast<std::size_t>(rate / 4.0), rate);
        const Channels out = host.Play(in, 1000);
        const auto latency = static_cast<std::size_t>(host.controls[kLatencyPort]);
        ASSERT_GT(latency, 0U);
        ASSERT_LT(latency, in[0].size() / 2) << rate;
        for (std::size_t channel = 0; channel < 2; ++channel) {
            EXPECT_TRUE(std::equal(out[channel].begin() + static_cast<std::ptrdiff_t>(latency),
                                   out[channel].end(), in[channel].begin()))
                << rate;
            EXPECT_EQ(std::count(out[channel].begin(),
                                 out[channel].begin() + static_cast<std::ptrdiff_t>(latency), 0.0F),
                      static_cast<std::ptrdiff_t>(latency));
        }
    }
}

TEST(Lv2Plugin, ARunOfNoFramesWithoutAudioPortsReportsALatencyOf517FramesAt48000Hz) {
    PluginHost host(1, 48000.0);
    host.Run(0);
    EXPECT_EQ(host.controls[kLatencyPort], 517.0F);
    host.ConnectAudio(0, nullptr, nullptr);
    host.Run(64);
    EXPECT_EQ(host.controls[kOutOfRangePort], 0.0F);
}

/// The largest step of the slope, which a click makes large.
float LargestBend(const std::vector<float>& signal) {
    float largest = 0.0F;
    for (std::size_t i = 2; i < signal.size(); ++i) {
        largest = std::max(largest, std::abs(signal[i] - 2.0F * signal[i - 1] + signal[i - 2]));
    }
    return largest;
}

TEST(Lv2Plugin, SwitchingItOffAndOnDoesNotClick) {
    PluginHost host(1, 48000.0);
    host.controls[kSuppressionPort] = 3.0F;
    host.controls[kGainOnPort] = 1.0F;
    Channels tone(1, std::vector<float>(96000));
    for (std::size_t i = 0; i < tone[0].size(); ++i) {
        const double fade = std::min(1.0, static_cast<double>(i) / 4800.0);
        tone[0][i] = static_cast<float>(
            0.5 * fade * std::sin(2.0 * M_PI * 200.0 / 48000.0 * static_cast<double>(i)));
    }
    std::vector<float> out;
    float lowest = 1.0F;
    for (std::size_t at = 0; at < tone[0].size(); at += 4800) {
        host.controls[kEnabledPort] = at / 4800 % 2 == 0 ? 1.0F : 0.0F;
        const Channels piece =
            host.Play({{tone[0].begin() + static_cast<std::ptrdiff_t>(at),
                        tone[0].begin() + static_cast<std::ptrdiff_t>(at + 4800)}},
                      128);
        out.insert(out.end(), piece[0].begin(), piece[0].end());
        if (at > 48000) {
            lowest = std::min(lowest, *std::max_element(piece[0].end() - 2000, piece[0].end()));
        }
    }
    EXPECT_LT(LargestBend(out), 0.01F);
    EXPECT_LT(lowest, 0.4F) << "the two sides of the switch sound the same";
}

TEST(Lv2Plugin, SamplesThatAreNotFiniteNeverReachTheOutput) {
    for (const float enabled : {0.0F, 1.0F}) {
        PluginHost host(2, 48000.0);
        host.controls[kEnabledPort] = enabled;
        host.controls[kGainOnPort] = 1.0F;
        Channels in = Signal(2, 24000);
        for (std::size_t i = 100; i < in[0].size(); i += 777) {
            in[0][i] = kNan;
            in[1][i] = i % 2 == 0 ? kInfinity : -kInfinity;
            in[0][i + 1] = std::numeric_limits<float>::max();
        }
        const Channels out = host.Play(in, 333);
        for (const std::vector<float>& channel : out) {
            EXPECT_TRUE(std::all_of(channel.begin(), channel.end(),
                                    [](float sample) { return std::isfinite(sample); }));
            EXPECT_GT(*std::max_element(channel.begin() + 12000, channel.end()), 0.1F);
        }
    }
}

TEST(Lv2Plugin, BlocksOf1Or100000Or400000FramesReturnTheSameBits) {
    const Channels in = Signal(1, 400000);
    const Channels expected = PluginHost(1, 48000.0).Play(in, 400000);
    EXPECT_EQ(PluginHost(1, 48000.0).Play(in, 100000), expected);
    PluginHost host(1, 48000.0);
    Channels out = host.Play({{in[0].begin(), in[0].begin() + 3000}}, 1);
    host.Run(0);
    out[0].insert(out[0].end(), expected[0].begin() + 3000, expected[0].end());
    EXPECT_EQ(out, expected);
}

TEST(Lv2Plugin, OutputsMayUseTheBuffersOfInputsInAnyOrder) {
    const Channels in = Signal(2, 9600);
    const Channels expected = PluginHost(2, 48000.0).Play(in, 500);
    Channels buffers = in;
    PluginHost host(2, 48000.0);
    for (std::size_t at = 0; at < 9600; at += 500) {
        for (std::size_t channel = 0; channel < 2; ++channel) {
            host.ConnectAudio(channel, buffers[channel].data() + at,
                              buffers[1 - channel].data() + at);
        }
        host.Run(std::min<std::size_t>(500, 9600 - at));
    }
    EXPECT_EQ(buffers[1], expected[0]);
    EXPECT_EQ(buffers[0], expected[1]);
}

TEST(Lv2Plugin, SettingsOutOfRangeAreClampedAndCounted) {
    const Channels in = Signal(1, 24000);
    const auto play = [&in](float suppression, float gain) {
        PluginHost host(1, 48000.0);
        host.controls[kSuppressionPort] = suppression;
        host.controls[kGainOnPort] = 1.0F;
        host.controls[kGainPort] = gain;
        const Channels out = host.Play(in, 480);
        return std::pair(out[0], host.controls[kOutOfRangePort]);
    };
    const auto& [highest, none] = play(3.0F, 1.0F);
    EXPECT_EQ(none, 0.0F);
    EXPECT_EQ(play(99.0F, 1.0F), std::pair(highest, 1.0F));
    EXPECT_EQ(play(kInfinity, 1e30F), std::pair(highest, 2.0F));
    EXPECT_EQ(play(3.0F, 1.5F), std::pair(highest, 1.0F));
    EXPECT_EQ(play(-7.0F, -1.0F), std::pair(play(-1.0F, 0.0F).first, 2.0F));
    EXPECT_EQ(play(kNan, kNan), std::pair(play(-1.0F, 0.0F).first, 2.0F));
    EXPECT_NE(play(0.0F, 0.0F).first, highest);
}

TEST(Lv2Plugin, ControlsThatAreNotConnectedHaveTheirInitialValues) {
    const Channels in = Signal(1, 9600);
    const Channels expected = PluginHost(1, 48000.0).Play(in, 480);
    PluginHost host(1, 48000.0);
    for (std::size_t control = 0; control < kControlPortCount; ++control) {
        host.controls[control] = 0.0F;
        host.Connect(2 + control, nullptr);
    }
    EXPECT_EQ(host.Play(in, 480), expected);
}

/// A host's log, which keeps its lines.
struct Log {
    static int Print(LV2_Log_Handle handle, LV2_URID, const char* format, ...) {
        std::va_list arguments;
        va_start(arguments, format);
        const int length = PrintList(handle, 0, format, arguments);
        va_end(arguments);
        return length;
    }
    static int PrintList(LV2_Log_Handle handle, LV2_URID, const char* format,
                         std::va_list arguments) {
        std::array<char, 200> line = {};
        const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
        static_cast<Log*>(handle)->text += line.data();
        return length;
    }
    static LV2_URID Map(LV2_URID_Map_Handle, const char*) { return 1; }

    std::string text;
};

TEST(Lv2Plugin, UnsupportedRatesAreRefusedWithALineInTheHostsLog) {
    Log log;
    LV2_Log_Log feature = {&log, Log::Print, Log::PrintList};
    LV2_URID_Map map = {nullptr, Log::Map};
    const LV2_Feature logFeature = {LV2_LOG__log, &feature};
    const LV2_Feature mapFeature = {LV2_URID__map, &map};
    const std::array<const LV2_Feature*, 3> features = {&logFeature, &mapFeature, nullptr};
    const LV2_Descriptor* const descriptor = Descriptor(1);
    for (const double rate : {7999.0, 192001.0, 0.0, -48000.0, 1e300, static_cast<double>(kNan)}) {
        log.text.clear();
        EXPECT_EQ(descriptor->instantiate(descriptor, rate, "", features.data()), nullptr);
        EXPECT_NE(log.text.find("Hz is not supported: 8000 to 192000 Hz are\n"), std::string::npos)
            << rate << log.text;
    }
    testing::internal::CaptureStderr();
    EXPECT_THROW(PluginHost(2, 7999.0), std::runtime_error);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "audio_filter: 7999 Hz is not supported: 8000 to 192000 Hz are\n");
}

TEST(Lv2Plugin, TwoHundredInstancesLeaveNoMemoryBehind) {
    const Channels in = Signal(2, 480);
    Channels out = PluginHost(2, 48000.0).Play(in, 480);
    const Allocations allocations;
    {
        std::vector<std::unique_ptr<PluginHost>> hosts;
        for (int i = 0; i < 200; ++i) {
            hosts.push_back(std::make_unique<PluginHost>(1 + i % 2, 48000.0));
            hosts.back()->Play(in, 480);
        }
        EXPECT_GT(allocations.Held(), 2000);
    }
    EXPECT_EQ(allocations.Held(), 0);
}

TEST(Lv2Plugin, ActivatingItForgetsAllEarlierInput) {
    const Channels in = Signal(2, 9600);
    PluginHost host(2, 48000.0);
    const Channels first = host.Play(in, 480);
    EXPECT_NE(host.Play(in, 480), first);
    host.Activate();
    EXPECT_EQ(host.Play(in, 480), first);
}

TEST(Lv2Plugin, WithoutMemoryItIsNotInstantiatedAndAfterActivationItReturnsItsInput) {
    const LV2_Descriptor* const descriptor = Descriptor(1);
    const Channels in = Signal(1, 4800);
    PluginHost host(1, 48000.0);
    {
        Allocations allocations;
        allocations.Fail(1, true);
        host.Activate();
        EXPECT_TRUE(allocations.FailNoMore());
    }
    EXPECT_EQ(host.Play(in, 480), in);
    EXPECT_EQ(host.controls[kLatencyPort], 0.0F);
    Allocations allocations;
    allocations.Fail(1, true);
    EXPECT_EQ(descriptor->instantiate(descriptor, 48000.0, "", nullptr), nullptr);
}

TEST(Lv2Plugin, TheMetersShowReductionAndMusicWhileTheyAreOn) {
    PluginHost host(1, 48000.0);
    host.controls[kSuppressionPort] = 3.0F;
    host.controls[kMusicDetectionPort] = 0.0F;
    std::mt19937 random(1);
    std::uniform_real_distribution<float> noise(-0.05F, 0.05F);
    Channels steady(1, std::vector<float>(5 * 48000));
    std::generate(steady[0].begin(), steady[0].end(), [&] { return noise(random); });
    host.Play({{steady[0].begin(), steady[0].begin() + 96000}}, 480);
    EXPECT_GT(host.controls[kReductionPort], 12.0F);
    EXPECT_EQ(host.controls[kMusicPort], 0.0F);
    host.controls[kMusicDetectionPort] = 1.0F;
    host.Play(steady, 480);
    EXPECT_EQ(host.controls[kMusicPort], 1.0F) << "steady noise passes for music";
    EXPECT_LT(host.controls[kReductionPort], 10.0F);
    host.controls[kEnabledPort] = 0.0F;
    host.Play({{steady[0].begin(), steady[0].begin() + 9600}}, 480);
    EXPECT_EQ(host.controls[kReductionPort], 0.0F);
    EXPECT_EQ(host.controls[kMusicPort], 0.0F);
}

}  // namespace

}  // namespace audio_filter
