#pragma once

#include <cstdarg>
#include <cstdio>
#include <type_traits>

namespace audio_filter::internal {

/// An argument list as the writers take it, and back: a char* where va_list is one, else the list's
/// address. A va_list parameter decays where it is an array: pack a local one.
template <typename List = va_list>
char* PackArguments(List& args) {
    if constexpr (std::is_same_v<List, char*>) {
        return args;
    } else {
        return reinterpret_cast<char*>(&args);
    }
}

template <typename List = va_list>
List& UnpackArguments(char*& args) {
    if constexpr (std::is_same_v<List, char*>) {
        return args;
    } else {
        return *reinterpret_cast<List*>(args);
    }
}

/// Prints prefix, ":", the formatted message and a newline, and flushes. Texts may be null, for
/// empty; args as for PRLogWriter::WriteLog.
void PrintLogMessage(std::FILE* stream, const char* prefix, const char* format, char* args);

}  // namespace audio_filter::internal
