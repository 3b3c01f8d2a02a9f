#include "common/media_process.h"

#include <gtest/gtest.h>

#include <iterator>
#include <type_traits>

namespace {

TEST(ProcessTypes, NameOf6IsVdieoBrightenLettersTransposed) {
    EXPECT_EQ(kProcessTypeNames[VP_BRIGHTEN], "VdieoBrighten");
}

TEST(ProcessTypes, FifteenNamesStandInTheOrderOfTheirValues) {
    EXPECT_EQ(std::size(kProcessTypeNames), 15U);
    EXPECT_EQ(kProcessTypeNames[AP_DENOISE], "AudioDenoise");
    EXPECT_EQ(kProcessTypeNames[AP_PHASE_CHECK], "AudioPhaseCheck");
    EXPECT_EQ(kProcessTypeNames[AP_VOICE_CHANGE], "VoiceChange");
    EXPECT_EQ(kProcessTypeNames[AP_GAIN], "AudioGain");
    EXPECT_EQ(kProcessTypeNames[AP_MIXING], "AudioMixing");
    EXPECT_EQ(kProcessTypeNames[VP_SHARPEN], "VideoSharpen");
    EXPECT_EQ(kProcessTypeNames[VP_DENOISE], "VideoDenoise");
    EXPECT_EQ(kProcessTypeNames[VP_BEAUTY], "BeautyFilter");
    EXPECT_EQ(kProcessTypeNames[VP_IMAGE_WATERMARK], "ImageWatermark");
    EXPECT_EQ(kProcessTypeNames[VP_TEXT_WATERMARK], "TextWatermark");
    EXPECT_EQ(kProcessTypeNames[VP_VIRTUAL_BACKGROUND], "VirtualBackground");
    EXPECT_EQ(kProcessTypeNames[AP_RECOGNIZE_REALTIME], "AudioRecognizeRealTime");
    EXPECT_EQ(kProcessTypeNames[AP_RECOGNIZE_OFFLINE], "AudioRecognizeOffline");
    EXPECT_EQ(kProcessTypeNames[14], "Translate");
    EXPECT_EQ(AP_TRANSLATE, 14);
}

TEST(ProcessTypes, ASwitchMapIsOrderedByValueAndReadingAMissingKeyInsertsFalse) {
    ProcessSwitchMap switches = {{AP_GAIN, true}, {AP_DENOISE, true}};
    EXPECT_EQ(switches.begin()->first, AP_DENOISE);
    EXPECT_FALSE(switches[AP_MIXING]);
    EXPECT_EQ(switches.count(AP_MIXING), 1U);
}

TEST(Vocabulary, EnumerationsAre32BitSignedAndMayHoldAnyValue) {
    static_assert(std::is_same_v<std::underlying_type_t<ProcessType>, std::int32_t>);
    static_assert(std::is_same_v<std::underlying_type_t<AVSourceType>, std::int32_t>);
    static_assert(std::is_same_v<std::underlying_type_t<SampleFmt>, std::int32_t>);
    static_assert(std::is_same_v<std::underlying_type_t<LANGUAGE_TYPE>, std::int32_t>);
    EXPECT_EQ(AV_SOURCE_MICROPHONE, 0);
    EXPECT_EQ(AV_SOURCE_3, 3);
    EXPECT_EQ(SAMPLE_FMT_NONE, -1);
    EXPECT_EQ(SAMPLE_FMT_S16, 1);
    EXPECT_EQ(SAMPLE_FMT_FLT, 3);
    EXPECT_EQ(SAMPLE_FMT_S16P, 6);
    EXPECT_EQ(SAMPLE_FMT_FLTP, 8);
    EXPECT_EQ(SAMPLE_FMT_DBLP, 9);
}

TEST(Vocabulary, BeautyTablesHold28KeysAnd11Filters) {
    EXPECT_EQ(kFilterNameKey, "filter_name");
    EXPECT_EQ(std::size(kBeautyParamKeys), 28U);
    EXPECT_EQ(kBeautyParamKeys[0], "blur_level");
    EXPECT_EQ(kBeautyParamKeys[7], "remove_nasolabial_folds_strength");
    EXPECT_EQ(kBeautyParamKeys[15], "intensity_mouth_v2");
    EXPECT_EQ(kBeautyParamKeys[27], "intensity_smile");
    EXPECT_EQ(std::size(kBeautyFilterNames), 11U);
    EXPECT_EQ(kBeautyFilterNames[0], "origin");
    EXPECT_EQ(kBeautyFilterNames[6], "lengsediao1");
    EXPECT_EQ(kBeautyFilterNames[10], "mitao1");
    for (const std::string& key : kBeautyParamKeys) {
        EXPECT_FALSE(key.empty());
    }
}

}  // namespace
