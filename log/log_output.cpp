#include "log/log_output.h"

void PrintLogMessage(std::FILE* stream, const char* prefix, const char* format, char* args) {
    std::fprintf(stream, "%s:", prefix == nullptr ? "" : prefix);
    if (format != nullptr && args != nullptr) {
        // The caller has started the list. NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
        std::vfprintf(stream, format, UnpackArguments(args));
    } else if (format != nullptr) {
        std::fputs(format, stream);
    }
    std::fputc('\n', stream);
    std::fflush(stream);
}
