#pragma once

#include "plugins/obs/obs_filter.h"

namespace audio_filter::obs {

/// What the dialog of a filter shows. The caller owns the result.
/// @param filter null for the properties of the type, without a report
obs_properties_t* MakeProperties(ObsFilter* filter);

}  // namespace audio_filter::obs
