#include "host/media/libav.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

/// No frame, packet or table of a recording comes near it.
constexpr std::size_t kMostBytesAtOnce = std::size_t{256} << 20;

std::string& LastMessage() {
    thread_local std::string message;
    return message;
}

/// Messages may quote bytes of the file.
std::string Printable(std::string text) {
    std::erase_if(text, [](char c) { return c == '\n' || c == '\r'; });
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

void KeepErrors(void* /*object*/, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_ERROR) {
        return;
    }
    std::array<char, 200> text = {};
    // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): libav's own formats
    std::vsnprintf(text.data(), text.size(), format, arguments);
    LastMessage() = Printable(text.data());
}

}  // namespace

void PrepareLibav() {
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_callback(KeepErrors);
        av_max_alloc(kMostBytesAtOnce);
    });
}

std::string LibavError(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text = {};
    av_strerror(error, text.data(), text.size());
    const std::string message = std::exchange(LastMessage(), "");
    return text.data() + (message.empty() ? "" : " (" + message + ")");
}
