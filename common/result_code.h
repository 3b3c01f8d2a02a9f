#pragma once

#include <cstdint>

/// The result codes. Operations that return one are declared to return int. AudioFilter, the units and
/// MediaProcessLog share the positive codes; PRLog and its writers, ProcessData, PhaseCheck, NSWrap
/// and AudioMixing::Init report any failure as RESULT_FAILURE.
enum ResultCode : std::int32_t {
    RESULT_FAILURE = -1,             ///< failure without a code of its own
    RESULT_OK = 0,                   ///< done
    RESULT_BAD_ARGUMENT = 2,         ///< null buffer, no bytes, no sources or too many
    RESULT_INVALID = 3,              ///< an argument, a format or a size that is not supported
    RESULT_NOT_INITIALISED = 4,      ///< no successful Init, or Clear since then
    RESULT_NEEDS_RESAMPLING = 9,     ///< AudioFilter: resample, then call ProcessResample
    RESULT_UNSUPPORTED_FORMAT = 11,  ///< AudioGain: a sample format that the call does not support
    RESULT_PASSED_THROUGH = 12,      ///< the units: unsupported, output unprocessed or untouched
    RESULT_RESAMPLED = 12            ///< AudioFilter::ProcessResample: done
};
