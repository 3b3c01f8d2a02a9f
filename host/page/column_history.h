#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "host/page/spectrum_analyzer.h"

/// Which signal.
enum class Version { kBefore, kAfter, kRemoved };
inline constexpr std::array kVersions = {Version::kBefore, Version::kAfter, Version::kRemoved};

/// A stretch of time of all signals, over all channels.
struct HistoryColumn {
    struct Wave {
        float least = 0.0F;
        float most = 0.0F;
        double power = 0.0;     ///< mean square
        double quietest = 0.0;  ///< least mean square of a hop
    };

    double hops = 0.0;  ///< how many make up this column
    std::array<Wave, 3> waves;
    std::array<std::vector<float>, 3> spectra;  ///< mean power of each row of frequencies
};

/// The spectra and levels of a signal of any length, before and after, in a bounded number of columns: when they are
/// full, each two become one.
class ColumnHistory {
public:
    static constexpr std::size_t kRows = 256;
    static constexpr std::size_t kMostColumns = 2000;

    ColumnHistory(int sampleRate, int channels);

    /// @param before, after interleaved frames of equal number
    void Add(const std::vector<float>& before, const std::vector<float>& after);

    /// Ends the signal.
    void Finish();

    /// At most kMostColumns, of equal length but the last.
    const std::vector<HistoryColumn>& Columns() const { return mColumns; }

    double Seconds() const;
    double ColumnSeconds() const;

    /// The upper end of the highest row, in Hz; row 0 begins at 0 Hz.
    double HighestFrequency() const { return mHighestFrequency; }

private:
    struct Channel {
        std::vector<float> before;
        std::vector<float> after;
    };

    void AddHops();
    HistoryColumn Hop(std::size_t at);
    void AddSpectra(const Channel& channel, std::size_t at, HistoryColumn& hop);
    void AddWaves(const Channel& channel, std::size_t at, HistoryColumn& hop) const;
    void Append(HistoryColumn&& hop);
    void HalveColumns();

    int mSampleRate;
    SpectrumAnalyzer mAnalyzer;
    double mHighestFrequency;
    std::size_t mHopFrames;
    std::vector<std::size_t> mRowOfBin;
    std::vector<Channel> mChannels;  ///< the frames that the next windows cover
    std::vector<HistoryColumn> mColumns;
    double mHopsPerColumn = 1.0;
    std::size_t mFrames = 0;
    std::size_t mHops = 0;
};
