#include "common/media_process.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

TEST(ProcessTypes, TheNameOf6IsMisspelledVdieoBrighten) {
    EXPECT_EQ(kProcessTypeNames[VP_BRIGHTEN], "VdieoBrighten");
}

TEST(ProcessTypes, FifteenNamesAreInTheOrderOfTheirValues) {
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
}

TEST(Vocabulary, EveryEnumeratorHasItsNumber) {
    int next = 0;
    for (const ProcessType type :
         {AP_DENOISE, AP_PHASE_CHECK, AP_VOICE_CHANGE, AP_GAIN, AP_MIXING, VP_SHARPEN, VP_BRIGHTEN,
          VP_DENOISE, VP_BEAUTY, VP_IMAGE_WATERMARK, VP_TEXT_WATERMARK, VP_VIRTUAL_BACKGROUND,
          AP_RECOGNIZE_REALTIME, AP_RECOGNIZE_OFFLINE, AP_TRANSLATE}) {
        EXPECT_EQ(type, next++);
    }
    next = 0;
    for (const AVSourceType source :
         {AV_SOURCE_MICROPHONE, AV_SOURCE_1, AV_SOURCE_2, AV_SOURCE_3}) {
        EXPECT_EQ(source, next++);
    }
    next = -1;
    for (const SampleFmt fmt : {SAMPLE_FMT_NONE, SAMPLE_FMT_U8, SAMPLE_FMT_S16, SAMPLE_FMT_S32,
                                SAMPLE_FMT_FLT, SAMPLE_FMT_DBL, SAMPLE_FMT_U8P, SAMPLE_FMT_S16P,
                                SAMPLE_FMT_S32P, SAMPLE_FMT_FLTP, SAMPLE_FMT_DBLP}) {
        EXPECT_EQ(fmt, next++);
    }
}

std::vector<std::string> Words(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

TEST(Vocabulary, TheBeautyTablesHoldThese28KeysAnd11Filters) {
    EXPECT_EQ(kFilterNameKey, "filter_name");
    EXPECT_EQ(std::vector<std::string>(std::begin(kBeautyParamKeys), std::end(kBeautyParamKeys)),
              Words("blur_level color_level red_level sharpen eye_bright tooth_whiten "
                    "remove_pouch_strength remove_nasolabial_folds_strength filter_level "
                    "cheek_thinning eye_enlarging_v2 intensity_eye_circle intensity_chin "
                    "intensity_forehead_v2 intensity_nose_v2 intensity_mouth_v2 cheek_v "
                    "cheek_narrow_v2 cheek_short cheek_small_v2 intensity_cheekbones "
                    "intensity_lower_jaw intensity_canthus intensity_eye_space "
                    "intensity_eye_rotate intensity_long_nose intensity_philtrum "
                    "intensity_smile"));
    EXPECT_EQ(
        std::vector<std::string>(std::begin(kBeautyFilterNames), std::end(kBeautyFilterNames)),
        Words("origin ziran1 bailiang1 fennen1 gexing1 heibai1 lengsediao1 nuansediao1 "
              "xiaoqingxin1 zhiganhui1 mitao1"));
}

}  // namespace
