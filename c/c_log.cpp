#include "c/c_log.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace audio_filter::internal {

namespace {

std::mutex mutex;
audio_filter_log_callback callback = nullptr;
void* user = nullptr;

}  // namespace

void SetCLog(audio_filter_log_callback newCallback, void* newUser) {
    const std::lock_guard lock(mutex);
    callback = newCallback;
    user = newUser;
}

void CLog(audio_filter_log_level level, const char* format, ...) {
    char message[201];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof(message), format, arguments);
    va_end(arguments);
    const std::lock_guard lock(mutex);
    if (callback != nullptr) {
        callback(user, level, message);
    }
}

}  // namespace audio_filter::internal
