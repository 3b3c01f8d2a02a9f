#include "host/timeline.h"

#include <gtest/gtest.h>

namespace {

using audio_filter::MusicMode;
using audio_filter::Stretch;

constexpr AudioFormat kStereo = {48000, 2, SampleFormat::kS16};
constexpr AudioFormat kMono = {48000, 1, SampleFormat::kS16};

CleanJob Job() {
    CleanJob job;
    job.inputs = {{"in.wav", AV_SOURCE_MICROPHONE}};
    return job;
}

TEST(Timeline, TheSettingsOfTheJobAreThoseOfTheStream) {
    CleanJob job = Job();
    job.settings = {1, 0.25F, PhaseMode::kLive, false, true};
    const audio_filter::StreamSettings settings = Timeline(job, kStereo, {}).ForStream();
    EXPECT_EQ(settings.suppression, 1);
    EXPECT_EQ(settings.gain, 0.25F);
    EXPECT_TRUE(settings.phaseCheck);
    EXPECT_FALSE(settings.mix);
    EXPECT_EQ(settings.music, MusicMode::kKeep);
}

TEST(Timeline, ChangesApplyAtTheirFrameInOrder) {
    CleanJob job = Job();
    job.changes = {
        {1.0, {{"denoise", "off"}}}, {1.0, {{"gain", "0.5"}}}, {2.0, {{"denoise", "3"}}}};
    Timeline timeline(job, kStereo, {});
    EXPECT_EQ(timeline.FramesLeft(), 48000);
    EXPECT_FALSE(timeline.MoveTo(47999));
    EXPECT_EQ(timeline.FramesLeft(), 1);
    EXPECT_TRUE(timeline.MoveTo(48000));
    EXPECT_EQ(timeline.ForStream().suppression, std::nullopt);
    EXPECT_EQ(timeline.ForStream().gain, 0.5F);
    EXPECT_EQ(timeline.FramesLeft(), 48000);
    EXPECT_EQ(timeline.NotReached(), std::vector<double>{2.0});
    EXPECT_TRUE(timeline.MoveTo(96000));
    EXPECT_EQ(timeline.ForStream().suppression, 3);
    EXPECT_EQ(timeline.FramesLeft(), std::nullopt);
    EXPECT_EQ(timeline.Applied().size(), 4U);
}

TEST(Timeline, AChangeAtTheStartReplacesTheSettings) {
    CleanJob job = Job();
    job.changes = {{0.0, {{"denoise", "1"}}}};
    const Timeline timeline(job, kStereo, {});
    ASSERT_EQ(timeline.Applied().size(), 1U);
    EXPECT_EQ(timeline.Applied()[0].settings.denoiseLevel, 1);
    EXPECT_EQ(timeline.ForStream().suppression, 1);
}

TEST(Timeline, ReversedStretchesNegateTheirSourceFromTheFirstFrameToTheLast) {
    const CleanJob job = Job();
    Timeline timeline(job, kStereo, {{}, {{100, 200}, {300, 400}}});
    EXPECT_FALSE(timeline.ForStream().phaseCheck);
    EXPECT_EQ(timeline.ForStream().reversed, 0);
    EXPECT_EQ(timeline.FramesLeft(), 100);
    EXPECT_TRUE(timeline.MoveTo(100));
    EXPECT_EQ(timeline.ForStream().reversed, 2);
    EXPECT_TRUE(timeline.MoveTo(200));
    EXPECT_EQ(timeline.ForStream().reversed, 0);
    EXPECT_TRUE(timeline.MoveTo(399));
    EXPECT_TRUE(timeline.MoveTo(400));
    EXPECT_EQ(timeline.FramesLeft(), std::nullopt);
}

TEST(Timeline, WithoutAScanTheFilesPhaseIsCheckedLiveAndInMonoNotAtAll) {
    const CleanJob job = Job();
    const Timeline stereo(job, kStereo, {});
    EXPECT_TRUE(stereo.ForStream().phaseCheck);
    EXPECT_EQ(stereo.Applied()[0].settings.phaseCheck, PhaseMode::kLive);
    const Timeline mono(job, kMono, {});
    EXPECT_FALSE(mono.ForStream().phaseCheck);
    EXPECT_EQ(mono.Applied()[0].settings.phaseCheck, PhaseMode::kOff);
}

TEST(Timeline, WithTheFirstSourceAloneThatHasToBeTheMicrophone) {
    CleanJob job = Job();
    job.inputs = {{"a.wav", AV_SOURCE_1}, {"b.wav", AV_SOURCE_MICROPHONE}};
    EXPECT_EQ(Timeline(job, kMono, {}).ForStream().suppression, 2);
    EXPECT_FALSE(Timeline(job, kMono, {}).LacksMicrophone());
    job.settings.mix = false;
    EXPECT_EQ(Timeline(job, kMono, {}).ForStream().suppression, std::nullopt);
    EXPECT_TRUE(Timeline(job, kMono, {}).LacksMicrophone());
}

}  // namespace
