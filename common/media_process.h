#pragma once

#include <cstdint>
#include <map>
#include <string>

/// @file
/// The vocabulary that the library shares with the media engine. The audio library uses the
/// processing kinds 0 to 4, the source types and the sample formats; the rest is the engine's.
///
/// Every enumeration has a 32-bit underlying type, so passing a value outside its list is defined:
/// the operation returns a result code.

/// A processing kind, and the index of its name in kProcessTypeNames.
enum ProcessType : std::int32_t {
    AP_DENOISE = 0,              ///< noise suppression
    AP_PHASE_CHECK = 1,          ///< stereo phase check
    AP_VOICE_CHANGE = 2,         ///< the engine's
    AP_GAIN = 3,                 ///< a fixed gain curve that shapes the waveform; no level control
    AP_MIXING = 4,               ///< mixing of several sources
    VP_SHARPEN = 5,              ///< the engine's
    VP_BRIGHTEN = 6,             ///< the engine's
    VP_DENOISE = 7,              ///< the engine's
    VP_BEAUTY = 8,               ///< the engine's
    VP_IMAGE_WATERMARK = 9,      ///< the engine's
    VP_TEXT_WATERMARK = 10,      ///< the engine's
    VP_VIRTUAL_BACKGROUND = 11,  ///< the engine's
    AP_RECOGNIZE_REALTIME = 12,  ///< the engine's
    AP_RECOGNIZE_OFFLINE = 13,   ///< the engine's
    AP_TRANSLATE = 14            ///< the engine's
};

/// The processing kinds that are requested, or on. Subscripting a missing key inserts false.
using ProcessSwitchMap = std::map<ProcessType, bool>;

/// The type of an input source. Noise suppression and music detection require the microphone; the
/// other types only select a phase checker.
enum AVSourceType : std::int32_t {
    AV_SOURCE_MICROPHONE = 0,  ///< the microphone
    AV_SOURCE_1 = 1,           ///< another source
    AV_SOURCE_2 = 2,           ///< another source
    AV_SOURCE_3 = 3            ///< another source
};

/// PCM sample formats: 0 to 4 interleaved, 5 to 9 the same samples planar.
enum SampleFmt : std::int32_t {
    SAMPLE_FMT_NONE = -1,  ///< no format
    SAMPLE_FMT_U8 = 0,     ///< unsigned 8-bit
    SAMPLE_FMT_S16 = 1,    ///< 16-bit
    SAMPLE_FMT_S32 = 2,    ///< 32-bit
    SAMPLE_FMT_FLT = 3,    ///< 32-bit float
    SAMPLE_FMT_DBL = 4,    ///< 64-bit float
    SAMPLE_FMT_U8P = 5,    ///< unsigned 8-bit, planar
    SAMPLE_FMT_S16P = 6,   ///< 16-bit, planar
    SAMPLE_FMT_S32P = 7,   ///< 32-bit, planar
    SAMPLE_FMT_FLTP = 8,   ///< 32-bit float, planar
    SAMPLE_FMT_DBLP = 9    ///< 64-bit float, planar
};

/// A language of the engine's recognition and translation; the engine defines the values.
enum LANGUAGE_TYPE : std::int32_t {};

/// Names of the processing kinds, indexed by ProcessType. "VdieoBrighten" is the engine's spelling.
const std::string kProcessTypeNames[15] = {"AudioDenoise",
                                           "AudioPhaseCheck",
                                           "VoiceChange",
                                           "AudioGain",
                                           "AudioMixing",
                                           "VideoSharpen",
                                           "VdieoBrighten",
                                           "VideoDenoise",
                                           "BeautyFilter",
                                           "ImageWatermark",
                                           "TextWatermark",
                                           "VirtualBackground",
                                           "AudioRecognizeRealTime",
                                           "AudioRecognizeOffline",
                                           "Translate"};

/// The engine's key for a filter name, used alongside kBeautyParamKeys.
const std::string kFilterNameKey = "filter_name";

/// Keys of the engine's beauty parameters.
const std::string kBeautyParamKeys[28] = {"blur_level",
                                          "color_level",
                                          "red_level",
                                          "sharpen",
                                          "eye_bright",
                                          "tooth_whiten",
                                          "remove_pouch_strength",
                                          "remove_nasolabial_folds_strength",
                                          "filter_level",
                                          "cheek_thinning",
                                          "eye_enlarging_v2",
                                          "intensity_eye_circle",
                                          "intensity_chin",
                                          "intensity_forehead_v2",
                                          "intensity_nose_v2",
                                          "intensity_mouth_v2",
                                          "cheek_v",
                                          "cheek_narrow_v2",
                                          "cheek_short",
                                          "cheek_small_v2",
                                          "intensity_cheekbones",
                                          "intensity_lower_jaw",
                                          "intensity_canthus",
                                          "intensity_eye_space",
                                          "intensity_eye_rotate",
                                          "intensity_long_nose",
                                          "intensity_philtrum",
                                          "intensity_smile"};

/// Names of the engine's beauty filters.
const std::string kBeautyFilterNames[11] = {
    "origin",      "ziran1",      "bailiang1",    "fennen1",    "gexing1", "heibai1",
    "lengsediao1", "nuansediao1", "xiaoqingxin1", "zhiganhui1", "mitao1"};
