#pragma once

#include <cstdarg>
#include <cstdio>
#include <type_traits>

namespace audio_filter::internal {

/// Conversion between a va_list and the char* that writers take: the list itself where va_list is a
/// char*, else its address. A va_list parameter decays where it is an array: pack a local copy.
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

/// Prints prefix, ":", the formatted message and a newline, and flushes. Null texts print as empty;
/// args as for PRLogWriter::WriteLog.
void PrintLogMessage(std::FILE* stream, const char* prefix, const char* format, char* args);

}  // namespace audio_filter::internal
