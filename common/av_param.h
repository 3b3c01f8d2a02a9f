#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/export.h"
#include "common/media_process.h"

/// @file
/// The parameter records that accompany media buffers through the engine. The audio library reads
/// and writes only the audio format of AVParam and carries everything else unchanged.
///
/// Plain values: copies are deep, and construction initialises every member. Copying and assigning
/// throw std::bad_alloc when memory runs out; the target of an assignment then holds a mixture of
/// both records. [any], one thread at a time per record.

/// A virtual background.
struct AUDIO_FILTER_API VBGParams {
    /// @{
    /// [any] A plain value.
    VBGParams();
    VBGParams(const VBGParams& other);
    VBGParams& operator=(const VBGParams& other);
    ~VBGParams();
    /// @}

    /// @{
    /// Carried unchanged.
    std::int32_t mode = -1;
    std::int32_t backgroundKind = 0;
    std::string modelPath;
    std::string backgroundPath;
    bool enabled = false;
    bool keepAspect = true;
    bool mirrored = false;
    std::int32_t quality = 6;
    std::int32_t strength = 5;
    std::int32_t width = 640;
    std::int32_t height = 480;
    std::int32_t frameRate = 15;
    std::int32_t rotation = 0;
    std::int16_t offsetX = 0;
    std::int16_t offsetY = 0;
    std::int32_t blur = 0;
    std::int32_t pixelFormat = 14;
    std::string colour;
    std::int32_t cropWidth = 640;
    std::int32_t cropHeight = 480;
    std::int32_t cropX = 0;
    std::int32_t cropY = 0;
    std::string resourcePath;
    std::string shaderPath;
    std::string maskPath;
    std::string licencePath;
    std::string licenceKey;
    std::string device;
    std::string cachePath;
    std::string logPath;
    std::int32_t threads = 4;
    /// @}
};

/// Recognition and translation.
struct AUDIO_FILTER_API AIPar {
    /// @{
    /// [any] A plain value.
    AIPar();
    AIPar(const AIPar& other);
    AIPar& operator=(const AIPar& other);
    ~AIPar();
    /// @}

    /// @{
    /// Carried unchanged.
    std::int32_t service = 6;
    std::int32_t task = -1;
    std::int32_t model = 0;
    std::int32_t partialResults = 0;
    std::int32_t punctuation = 0;
    std::vector<LANGUAGE_TYPE> sourceLanguages;
    std::vector<LANGUAGE_TYPE> targetLanguages;
    std::int64_t startTime = 0;
    std::string recognizedText;
    std::int64_t endTime = 0;
    std::string translatedText;
    std::int64_t sentence = 0;
    std::string server;
    std::string user;
    std::string key;
    std::string secret;
    std::string session;
    /// @}
};

/// Resources of the engine's beauty filter.
struct AUDIO_FILTER_API BeautyInitParams {
    /// @{
    /// [any] A plain value.
    BeautyInitParams();
    BeautyInitParams(const BeautyInitParams& other);
    BeautyInitParams& operator=(const BeautyInitParams& other);
    ~BeautyInitParams();
    /// @}

    /// @{
    /// Carried unchanged.
    std::string resourcePath;
    std::string modelPath;
    std::string licencePath;
    /// @}
};

/// Opaque bytes that the engine attaches to a buffer.
struct AUDIO_FILTER_API ProcessUsrData {
    /// [any] No bytes.
    ProcessUsrData();
    /// A copy of a record without bytes is a default record.
    ProcessUsrData(const ProcessUsrData& other);
    /// Reuses the allocation when the sizes are equal; when memory runs out, the target is unchanged.
    /// Assigning a record without bytes leaves none, and size -1.
    ProcessUsrData& operator=(const ProcessUsrData& other);
    /// [any] Frees the bytes.
    ~ProcessUsrData();

    std::int32_t size = -1;  ///< bytes; -1 for none
    char* data = nullptr;    ///< allocated with new[], owned by the record

private:
    bool HasBytes() const { return data != nullptr && size > 0; }
};

/// The parameters of a media buffer.
struct AUDIO_FILTER_API AVParam {
    /// @{
    /// [any] A plain value.
    AVParam();
    AVParam(const AVParam& other);
    AVParam& operator=(const AVParam& other);
    ~AVParam();
    /// @}

    /// @{
    /// Carried unchanged.
    std::int32_t streamIndex = -1;
    std::int32_t mediaType = 4;
    std::string streamName;
    std::int32_t videoWidth = -1;
    std::int32_t videoHeight = -1;
    std::int32_t videoFrameRate = -1;
    std::int32_t videoPixelFmt = 13;
    VBGParams virtualBackground;
    std::int32_t videoRotation = 0;
    std::int32_t videoQuality = 3;
    std::string imageWatermark;
    std::string textWatermark;
    /// @}
    std::int32_t audioSampleRate = -1;  ///< Hz
    std::int32_t audioChannels = -1;    ///< 1 or more; -1 for none
    std::int32_t audioSampleFmt = -1;   ///< a SampleFmt
    /// @{
    /// Carried unchanged.
    std::int32_t audioFrameSize = -1;
    std::int32_t audioBitRate = -1;
    std::int32_t audioCodec = -1;
    std::int32_t audioFlags = 0;
    AIPar recognition;
    std::int64_t pts = 0;
    std::int64_t dts = 0;
    std::int64_t duration = 0;
    std::int64_t captureTime = 0;
    std::int64_t sendTime = 0;
    std::int64_t serial = 0;
    /// @}
};
