#pragma once

#include "audio_filter/c.h"

/// The log of the C interface: one callback for the process.
namespace audio_filter::internal {

/// [setup] Waits for a message that is being logged.
void SetCLog(audio_filter_log_callback callback, void* user);

/// [setup] Formats as printf does; cuts messages off after 200 characters.
[[gnu::format(printf, 2, 3)]] void CLog(audio_filter_log_level level, const char* format, ...);

}  // namespace audio_filter::internal
