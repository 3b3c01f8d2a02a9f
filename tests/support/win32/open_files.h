#pragma once

#include <io.h>

/// How many files this process holds open. stdio keeps track of every stream, so no leak checker
/// sees one that is forgotten.
inline long OpenFileCount() {
    constexpr int kMostFiles = 2048;
    long open = 0;
    for (int file = 0; file < kMostFiles; ++file) {
        open += _get_osfhandle(file) != -1 ? 1 : 0;
    }
    return open;
}
