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

/// Runs a stream of any rate through an AudioFilter: resamples where the filter requests it, removes
/// the latency, and outputs exactly as many frames as the input has. Settings may change between two
/// blocks, without a gap.
template <typename Sample>
class FilterStream : private FilterListener {
public:
    using Block = std::vector<Sample>;
    using Sink = std::function<void(const Block&)>;

    /// @param format of every source
    /// @param sources source types, in the order of the source blocks
    /// @param sink receives the filtered blocks in order
    FilterStream(const FilterSettings& settings, const AudioFormat& format,
                 std::vector<AVSourceType> sources, Sink sink);

    /// Applies from the next block on.
    void Apply(const FilterSettings& settings);

    /// @param blocks a block of each source, one after another, of equal length; at most a second
    void Push(Block blocks);

    /// Ends the stream and outputs what the suppressor holds.
    void Finish();

    const FilterRecord& Record() const { return mRecord; }

private:
    void OnEvent(int code, std::string text) override;

    void Switch(const FilterSettings& settings, bool first);
    bool IsSuppressed(const FilterSettings& settings) const;
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
    void NoteRefusal(const std::string& call, const std::string& result);

    std::int64_t FramesOf(const Block& block) const;
    Block Silence(std::int64_t frames) const;
    std::int64_t Limit(Block& block, std::int64_t frames) const;
    std::int64_t Drop(Block& block, std::int64_t frames) const;

    AudioFormat mFormat;
    std::vector<AVSourceType> mSources;
    Sink mSink;
    AudioFilter mFilter;
    FilterRecord mRecord;
    int mLevel = 3;                ///< the filter's suppression level; 3 after Init
    bool mSuppresses = false;      ///< with the current settings
    std::int64_t mIn = 0;          ///< frames received
    std::int64_t mOut = 0;         ///< frames output
    std::vector<Block> mPast;      ///< the latest frames of each source
    std::int64_t mToSkip = 0;      ///< frames of the output still to drop
    std::int64_t mToDrop = 0;      ///< frames of the suppressor's output still to drop, before that
    std::int64_t mSuppressed = 0;  ///< frames passed to the suppressor so far

    // For streams that are resampled for the suppressor.
    AVParam mParam;
    std::optional<RateConverter> mToSuppressor;
    std::optional<RateConverter> mFromSuppressor;
};
