#pragma once

#include <obs.h>

#include <cstdint>
#include <string>
#include <vector>

/// A host of libobs without video, for the tests of the plug-in.
namespace audio_filter::obs {

/// What OBS has logged since the last call.
std::string TakeLog();

/// Starts OBS and loads the plug-in. @param folder of the plug-in, with bin/64bit and data
bool StartObs(const std::string& folder);
/// Stops OBS. @return the allocations of OBS that are left
long StopObs();

/// The path of the plug-in's module.
std::string ModulePath();

/// The functions of the plug-in's filter.
const obs_source_info& FilterInfo();

/// Waits until OBS has destroyed the sources and filters that were released; its audio thread holds some for longer.
void WaitForDestruction();

/// Sets OBS's audio format; no source may be alive.
void SetAudio(std::uint32_t rate, speaker_layout speakers);

/// Samples per channel.
using Channels = std::vector<std::vector<float>>;

/// A block that came out of the filter.
struct Block {
    Channels samples;
    std::uint64_t timestamp;  ///< ns
};

/// A source with the filter on it.
class FilteredSource {
public:
    /// @param settings JSON
    explicit FilteredSource(const char* settings = "{}");
    ~FilteredSource();
    FilteredSource(const FilteredSource&) = delete;
    FilteredSource& operator=(const FilteredSource&) = delete;

    /// Sends a block through OBS in OBS's own format. @return what comes out
    Block Play(const Channels& in, std::uint64_t timestamp);

    /// Plays `in` in blocks of the given frames, from 10 s on. @return what comes out, one after the other
    Channels PlayAll(const Channels& in, std::size_t frames);

    /// Calls the filter itself. @return what it returns
    Block Call(const Channels& in, std::uint64_t timestamp);

    /// Changes settings. @param settings JSON
    void Update(const char* settings);

    obs_source_t* Filter() const { return mFilter; }

private:
    static void OnAudio(void* self, obs_source_t* source, const audio_data* audio, bool muted);

    obs_source_t* mSource;
    obs_source_t* mFilter;
    std::vector<Block> mBlocks;
    std::uint64_t mTime = 10'000'000'000;
};

}  // namespace audio_filter::obs
