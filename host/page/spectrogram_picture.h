#pragma once

#include <string>

#include "host/page/column_history.h"

/// The bytes of a PNG file: spectrograms before, after and of what was removed, one above the other, with axes and a
/// legend.
std::string SpectrogramPicture(const ColumnHistory& history);
