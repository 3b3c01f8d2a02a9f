#include "log/log_output.h"

namespace audio_filter::internal {

namespace {

/// Prints "%%" as "%", and everything else literally.
void PrintWithoutArguments(std::FILE* stream, const char* format) {
    for (const char* c = format; *c != '\0'; ++c) {
        std::fputc(*c, stream);
        if (c[0] == '%' && c[1] == '%') {
            ++c;
        }
    }
}

}  // namespace

void PrintLogMessage(std::FILE* stream, const char* prefix, const char* format, char* args) {
    std::fprintf(stream, "%s:", prefix == nullptr ? "" : prefix);
    if (format != nullptr && args != nullptr) {
        // The caller has started the list. NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
        std::vfprintf(stream, format, UnpackArguments(args));
    } else if (format != nullptr) {
        PrintWithoutArguments(stream, format);
    }
    std::fputc('\n', stream);
    std::fflush(stream);
}

}  // namespace audio_filter::internal
