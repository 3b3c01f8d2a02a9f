#pragma once

#include <cstdint>

/// What the library's operations return. They are declared to return int; every value is one of
/// these. Positive codes are shared by AudioFilter and the units; the log, the pool, PhaseCheck and
/// NSWrap report any failure as RESULT_FAILURE.
enum ResultCode : std::int32_t {
    RESULT_FAILURE = -1,
    RESULT_OK = 0,
    RESULT_BAD_ARGUMENT = 2,         ///< null buffer, no bytes, no sources: nothing to process
    RESULT_INVALID = 3,              ///< an argument, a format or a size that is not accepted
    RESULT_NOT_INITIALISED = 4,      ///< no successful Init, or Clear since then
    RESULT_NEEDS_RESAMPLING = 9,     ///< AudioFilter: resample, then call ProcessResample
    RESULT_UNSUPPORTED_FORMAT = 11,  ///< AudioGain: a sample format that the call does not take
    RESULT_PASSED_THROUGH = 12,      ///< the units: unsupported, output unprocessed or untouched
    RESULT_RESAMPLED = 12            ///< AudioFilter::ProcessResample: done
};
