#pragma once

#include <dlfcn.h>
#include <lv2/core/lv2.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "plugins/lv2/control_ports.h"
#include "plugins/lv2/variants.h"

namespace audio_filter {

using Channels = std::vector<std::vector<float>>;

/// The entry point of the plug-in, which stays loaded.
inline const LV2_Descriptor* Descriptor(int channels) {
    static void* const library = dlopen(LV2_PLUGIN, RTLD_NOW);
    if (library == nullptr) {
        throw std::runtime_error(dlerror());
    }
    const auto entry = reinterpret_cast<LV2_Descriptor_Function>(dlsym(library, "lv2_descriptor"));
    return entry(channels == 1 ? 0 : 1);
}

/// An instance with every port connected.
class PluginHost {
public:
    PluginHost(int channels, double rate)
        : mDescriptor(Descriptor(channels)),
          mChannels(static_cast<std::size_t>(channels)),
          mInstance(mDescriptor->instantiate(mDescriptor, rate, "", kNoFeatures.data())) {
        if (mInstance == nullptr) {
            throw std::runtime_error("not instantiated");
        }
        for (std::size_t control = 0; control < kControlPortCount; ++control) {
            controls[control] = kControlPorts[control].range.initial;
            Connect(2 * mChannels + control, &controls[control]);
        }
        Activate();
    }
    ~PluginHost() { mDescriptor->cleanup(mInstance); }
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    void Activate() { mDescriptor->activate(mInstance); }

    void Connect(std::size_t port, float* data) {
        mDescriptor->connect_port(mInstance, static_cast<std::uint32_t>(port), data);
    }

    /// @param channel the input plays in the output's buffer where they are the same
    void ConnectAudio(std::size_t channel, float* in, float* out) {
        Connect(channel, in);
        Connect(mChannels + channel, out);
    }

    void Run(std::size_t frames) {
        mDescriptor->run(mInstance, static_cast<std::uint32_t>(frames));
    }

    /// Plays all channels of a signal in blocks of a length.
    Channels Play(const Channels& in, std::size_t block) {
        Channels from = in;
        Channels out(mChannels, std::vector<float>(in[0].size()));
        for (std::size_t at = 0; at < in[0].size(); at += block) {
            for (std::size_t channel = 0; channel < mChannels; ++channel) {
                ConnectAudio(channel, from[channel].data() + at, out[channel].data() + at);
            }
            Run(std::min(block, in[0].size() - at));
        }
        return out;
    }

    std::array<float, kControlPortCount> controls = {};

private:
    static constexpr std::array<const LV2_Feature*, 1> kNoFeatures = {};

    const LV2_Descriptor* mDescriptor;
    std::size_t mChannels;
    LV2_Handle mInstance;
};

}  // namespace audio_filter
