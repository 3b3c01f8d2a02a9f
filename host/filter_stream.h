#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "host/audio_format.h"
#include "host/filter_record.h"
#include "host/filter_settings.h"
#include "host/rate_converter.h"

/// Sends a stream of any rate through an AudioFilter: resamples where the filter hands a block back
/// for that, takes its delay away, and gives out exactly as many frames as came in. Settings may
/// change between two blocks, without a gap.
template <typename Sample>
class FilterStream : private FilterListener {
public:
    using Block = std::vector<Sample>;
    using Sink = std::function<void(const Block&)>;

    /// @param format of every source
    /// @param sources their kinds, in the order of their blocks
    /// @param sink takes the filtered blocks in order
    FilterStream(const FilterSettings& settings, const AudioFormat& format,
                 std::vector<AVSourceType> sources, Sink sink);

    /// From the next block on.
    void Apply(const FilterSettings& settings);

    /// @param blocks whole frames, as many of each source, one source after another; at most a
    ///        second
    void Push(Block blocks);

    /// Ends the stream: what has been held back comes out.
    void Finish();

    const FilterRecord& Record() const { return mRecord; }

private:
    void OnEvent(int code, std::string text) override;

    void Switch(const FilterSettings& settings, bool first);
    bool Hears(const FilterSettings& settings) const;
    void Process(Block blocks);
    void NoteCorrections(const Block& before, const Block& after);
    void HandOff(Block block);
    void ProcessResampled(Block block);
    void Emit(Block block);
    void Drain();
    Block Backwards(const Block& past, std::int64_t back, std::int64_t frames) const;
    void Remember(const Block& blocks);
    void Repeat(Block blocks);
    void StartSuppression();
    void Refused(const std::string& call, const std::string& answer);

    std::int64_t FramesOf(const Block& block) const;
    Block Silence(std::int64_t frames) const;
    std::int64_t Limit(Block& block, std::int64_t frames) const;
    std::int64_t Drop(Block& block, std::int64_t frames) const;

    AudioFormat mFormat;
    std::vector<AVSourceType> mSources;
    Sink mSink;
    AudioFilter mFilter;
    FilterRecord mRecord;
    int mLevel = 3;            ///< of noise suppression, that the filter has; 3 from the start
    bool mSuppresses = false;  ///< at the current settings
    std::int64_t mIn = 0;      ///< frames of the stream
    std::int64_t mOut = 0;
    std::vector<Block> mPast;      ///< the latest frames of each source
    std::int64_t mToSkip = 0;      ///< frames still to be dropped of what comes out
    std::int64_t mToDrop = 0;      ///< the same of what the suppressor gives out, before
    std::int64_t mSuppressed = 0;  ///< frames that the suppressor has been given, ever

    // Where the filter hands blocks back.
    AVParam mParam;
    std::optional<RateConverter> mThere;
    std::optional<RateConverter> mBack;
};
