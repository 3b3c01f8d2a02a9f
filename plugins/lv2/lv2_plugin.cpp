#include <lv2/core/lv2.h>
#include <lv2/core/lv2_util.h>
#include <lv2/log/logger.h>

#include <cmath>
#include <memory>
#include <new>
#include <string_view>

#include "common/result_code.h"
#include "plugins/lv2/ported_stream.h"
#include "plugins/lv2/variants.h"

namespace {

using audio_filter::kVariants;
using audio_filter::PortedStream;
using audio_filter::Variant;

/// Writes to the host's log; hosts without one get it on standard error.
LV2_Log_Logger LogOf(const LV2_Feature* const* features) {
    LV2_Log_Logger logger = {};
    auto* log = static_cast<LV2_Log_Log*>(lv2_features_data(features, LV2_LOG__log));
    auto* map = static_cast<LV2_URID_Map*>(lv2_features_data(features, LV2_URID__map));
    lv2_log_logger_init(&logger, map, log);
    return logger;
}

const Variant& VariantOf(const LV2_Descriptor* descriptor) {
    return kVariants[0].uri == std::string_view(descriptor->URI) ? kVariants[0] : kVariants[1];
}

LV2_Handle Instantiate(const LV2_Descriptor* descriptor, double rate, const char* /*bundle*/,
                       const LV2_Feature* const* features) {
    LV2_Log_Logger log = LogOf(features);
    try {
        auto stream = std::make_unique<PortedStream>();
        const bool fitsInt = rate > 0.0 && rate < 1e9;
        if (!fitsInt || stream->Init(static_cast<int>(std::lround(rate)),
                                     VariantOf(descriptor).channels) != RESULT_OK) {
            lv2_log_error(&log, "audio_filter: %g Hz is not supported: 8000 to 192000 Hz are\n",
                          rate);
            return nullptr;
        }
        return stream.release();
    } catch (const std::bad_alloc&) {
        lv2_log_error(&log, "audio_filter: out of memory\n");
        return nullptr;
    }
}

void ConnectPort(LV2_Handle instance, std::uint32_t port, void* data) {
    static_cast<PortedStream*>(instance)->Connect(port, static_cast<float*>(data));
}

void Activate(LV2_Handle instance) {
    try {
        static_cast<PortedStream*>(instance)->Reset();
    } catch (const std::bad_alloc&) {
        // The stream then copies its input.
    }
}

void Run(LV2_Handle instance, std::uint32_t frames) {
    static_cast<PortedStream*>(instance)->Run(frames);
}

void Cleanup(LV2_Handle instance) {
    delete static_cast<PortedStream*>(instance);
}

constexpr LV2_Descriptor Descriptor(const Variant& variant) {
    return {variant.uri, Instantiate, ConnectPort, Activate, Run, nullptr, Cleanup, nullptr};
}

constexpr LV2_Descriptor kDescriptors[] = {Descriptor(kVariants[0]), Descriptor(kVariants[1])};

}  // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(std::uint32_t index) {
    return index < std::size(kDescriptors) ? &kDescriptors[index] : nullptr;
}
