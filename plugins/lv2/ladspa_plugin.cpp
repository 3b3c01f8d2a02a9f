#include <ladspa.h>

#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "common/result_code.h"
#include "plugins/lv2/ported_stream.h"
#include "plugins/lv2/variants.h"

namespace {

using namespace audio_filter;

LADSPA_Handle Instantiate(const LADSPA_Descriptor* descriptor, unsigned long rate) {
    const Variant& variant = *static_cast<const Variant*>(descriptor->ImplementationData);
    try {
        auto stream = std::make_unique<PortedStream>();
        if (rate > 1000000000 ||
            stream->Init(static_cast<int>(rate), variant.channels) != RESULT_OK) {
            std::fprintf(stderr, "audio_filter: %lu Hz is not supported: 8000 to 192000 Hz are\n",
                         rate);
            return nullptr;
        }
        return stream.release();
    } catch (const std::bad_alloc&) {
        std::fputs("audio_filter: out of memory\n", stderr);
        return nullptr;
    }
}

void ConnectPort(LADSPA_Handle instance, unsigned long port, LADSPA_Data* data) {
    static_cast<PortedStream*>(instance)->Connect(port, data);
}

void Activate(LADSPA_Handle instance) {
    try {
        static_cast<PortedStream*>(instance)->Reset();
    } catch (const std::bad_alloc&) {
        // The stream then copies its input.
    }
}

void Run(LADSPA_Handle instance, unsigned long frames) {
    static_cast<PortedStream*>(instance)->Run(static_cast<std::uint32_t>(frames));
}

void Cleanup(LADSPA_Handle instance) {
    delete static_cast<PortedStream*>(instance);
}

LADSPA_PortRangeHint HintOf(const ControlPort& port) {
    const PluginRange<float>& range = port.range;
    const float place = (range.initial - range.lowest) / (range.highest - range.lowest);
    const int initial = place == 0.0F   ? LADSPA_HINT_DEFAULT_MINIMUM
                        : place == 0.5F ? LADSPA_HINT_DEFAULT_MIDDLE
                        : place == 1.0F ? LADSPA_HINT_DEFAULT_MAXIMUM
                                        : LADSPA_HINT_DEFAULT_HIGH;  // 3/4
    if (port.type == ControlPort::Type::kSwitch) {
        return {
            LADSPA_HINT_TOGGLED | (place == 0.0F ? LADSPA_HINT_DEFAULT_0 : LADSPA_HINT_DEFAULT_1),
            0.0F, 0.0F};
    }
    const int integer = port.type == ControlPort::Type::kInteger ? LADSPA_HINT_INTEGER : 0;
    return {LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_BOUNDED_ABOVE | integer | initial, range.lowest,
            range.highest};
}

/// A descriptor and the tables that it points to.
class Plugin {
public:
    explicit Plugin(const Variant& variant) : mName(variant.name) {
        const bool isMono = variant.channels == 1;
        for (const char* direction : {"In", "Out"}) {
            const LADSPA_PortDescriptor kind =
                LADSPA_PORT_AUDIO | (*direction == 'I' ? LADSPA_PORT_INPUT : LADSPA_PORT_OUTPUT);
            for (int channel = 0; channel < variant.channels; ++channel) {
                const char* side = isMono ? "" : channel == 0 ? " left" : " right";
                Add(kind, direction + std::string(side), {});
            }
        }
        for (std::size_t control = 0; control < kControlPortCount; ++control) {
            Add(LADSPA_PORT_CONTROL | (IsOutput(control) ? LADSPA_PORT_OUTPUT : LADSPA_PORT_INPUT),
                kControlPorts[control].symbol, HintOf(kControlPorts[control]));
        }
        for (const std::string& name : mPortNames) {
            mPortNamePointers.push_back(name.c_str());
        }
        mDescriptor = {variant.uniqueId,
                       variant.label,
                       LADSPA_PROPERTY_HARD_RT_CAPABLE,
                       mName.c_str(),
                       "The audio_filter authors",
                       "MIT",
                       mPorts.size(),
                       mPorts.data(),
                       mPortNamePointers.data(),
                       mHints.data(),
                       const_cast<Variant*>(&variant),
                       Instantiate,
                       ConnectPort,
                       Activate,
                       Run,
                       nullptr,
                       nullptr,
                       nullptr,
                       Cleanup};
    }

    const LADSPA_Descriptor* Descriptor() const { return &mDescriptor; }

private:
    void Add(LADSPA_PortDescriptor kind, const std::string& name, LADSPA_PortRangeHint hint) {
        mPorts.push_back(kind);
        mPortNames.push_back(name);
        mHints.push_back(hint);
    }

    std::string mName;
    std::vector<LADSPA_PortDescriptor> mPorts;
    std::vector<std::string> mPortNames;
    std::vector<const char*> mPortNamePointers;
    std::vector<LADSPA_PortRangeHint> mHints;
    LADSPA_Descriptor mDescriptor = {};
};

}  // namespace

extern "C" __attribute__((visibility("default"))) const LADSPA_Descriptor* ladspa_descriptor(
    unsigned long index) {
    static const Plugin plugins[] = {Plugin(kVariants[0]), Plugin(kVariants[1])};
    return index < std::size(plugins) ? plugins[index].Descriptor() : nullptr;
}
