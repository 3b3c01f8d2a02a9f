#pragma once

#include <cstddef>

#include "audio_filter/c.h"
#include "stream/stream_types.h"

/// The structures of the C interface, checked and converted. Functions return AUDIO_FILTER_OK or an error.
namespace audio_filter::internal {

int FillDefaults(audio_filter_format* format, std::size_t size);
int FillDefaults(audio_filter_settings* settings, std::size_t size);

/// @param given null for the defaults
int FromC(const audio_filter_format* given, StreamFormat& format);
int FromC(const audio_filter_settings* given, StreamSettings& settings);

/// Fills as many bytes as the size says.
int ToC(const StreamSettings& settings, audio_filter_settings* out);
int ToC(const StreamEvent& event, audio_filter_event* out);

/// One setting, by its number in the C interface.
int SetOne(int setting, double value, StreamSettings& settings);
int GetOne(const StreamSettings& settings, int setting, double& value);

}  // namespace audio_filter::internal
