#include "host/page/column_history.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace {

constexpr std::size_t kHopsPerWindow = 4;
constexpr double kWindowSeconds = 0.032;
constexpr std::size_t kLeastWindow = 512;  ///< about as many bins as rows
constexpr double kHighestShown = 24000.0;  ///< Hz

std::size_t WindowFrames(int sampleRate) {
    const auto frames = static_cast<std::size_t>(kWindowSeconds * sampleRate);
    return std::max(kLeastWindow, std::bit_ceil(frames));
}

/// Float files may contain anything.
float Finite(float sample) {
    return std::isfinite(sample) ? sample : 0.0F;
}

void Merge(HistoryColumn::Wave& wave, const HistoryColumn::Wave& other, double share) {
    wave.least = std::min(wave.least, other.least);
    wave.most = std::max(wave.most, other.most);
    wave.power += (other.power - wave.power) * share;
    wave.quietest = std::min(wave.quietest, other.quietest);
}

/// Adds the hops of another column.
void Merge(HistoryColumn& column, const HistoryColumn& other) {
    column.hops += other.hops;
    const double share = other.hops / column.hops;
    for (std::size_t version = 0; version < kVersions.size(); ++version) {
        Merge(column.waves[version], other.waves[version], share);
        std::vector<float>& rows = column.spectra[version];
        for (std::size_t row = 0; row < rows.size(); ++row) {
            rows[row] += (other.spectra[version][row] - rows[row]) * static_cast<float>(share);
        }
    }
}

}  // namespace

ColumnHistory::ColumnHistory(int sampleRate, int channels)
    : mSampleRate(sampleRate),
      mAnalyzer(WindowFrames(sampleRate)),
      mHighestFrequency(std::min(sampleRate / 2.0, kHighestShown)),
      mHopFrames(mAnalyzer.Frames() / kHopsPerWindow) {
    const double binHz = static_cast<double>(sampleRate) / static_cast<double>(mAnalyzer.Frames());
    for (std::size_t bin = 0; bin <= mAnalyzer.Frames() / 2; ++bin) {
        const double row = static_cast<double>(bin) * binHz / mHighestFrequency * kRows;
        mRowOfBin.push_back(std::min(static_cast<std::size_t>(row), kRows));
    }
    if (sampleRate / 2.0 <= kHighestShown) {
        mRowOfBin.back() = kRows - 1;
    }
    // The first hop lies in the middle of the first window.
    const std::vector<float> silence((mAnalyzer.Frames() - mHopFrames) / 2);
    mChannels.assign(static_cast<std::size_t>(channels), {silence, silence});
}

void ColumnHistory::Add(const std::vector<float>& before, const std::vector<float>& after) {
    const std::size_t count = mChannels.size();
    for (std::size_t i = 0; i < before.size(); ++i) {
        mChannels[i % count].before.push_back(Finite(before[i]));
        mChannels[i % count].after.push_back(Finite(after[i]));
    }
    mFrames += before.size() / count;
    AddHops();
}

void ColumnHistory::Finish() {
    const std::size_t hops = (mFrames + mHopFrames - 1) / mHopFrames;
    const std::size_t ends =
        (hops - std::min(hops, mHops)) * mHopFrames + mAnalyzer.Frames() - mHopFrames;
    for (Channel& channel : mChannels) {
        channel.before.resize(hops > mHops ? ends : 0);
        channel.after.resize(hops > mHops ? ends : 0);
    }
    AddHops();
}

double ColumnHistory::Seconds() const {
    return static_cast<double>(mFrames) / mSampleRate;
}

double ColumnHistory::ColumnSeconds() const {
    return mHopsPerColumn * static_cast<double>(mHopFrames) / mSampleRate;
}

void ColumnHistory::AddHops() {
    const std::size_t held = mChannels.front().before.size();
    std::size_t at = 0;
    for (; at + mAnalyzer.Frames() <= held; at += mHopFrames) {
        Append(Hop(at));
    }
    const auto used = static_cast<std::ptrdiff_t>(at);
    for (Channel& channel : mChannels) {
        channel.before.erase(channel.before.begin(), channel.before.begin() + used);
        channel.after.erase(channel.after.begin(), channel.after.begin() + used);
    }
}

/// The hop in the middle of the window that begins at a position of the frames held.
HistoryColumn ColumnHistory::Hop(std::size_t at) {
    HistoryColumn hop;
    hop.hops = 1.0;
    for (std::vector<float>& rows : hop.spectra) {
        rows.assign(kRows, 0.0F);
    }
    for (const Channel& channel : mChannels) {
        AddSpectra(channel, at, hop);
        AddWaves(channel, at, hop);
    }
    for (HistoryColumn::Wave& wave : hop.waves) {
        wave.quietest = wave.power;
    }
    return hop;
}

void ColumnHistory::AddSpectra(const Channel& channel, std::size_t at, HistoryColumn& hop) {
    const std::vector<std::complex<float>> before = mAnalyzer.Analyze(channel.before.data() + at);
    const std::vector<std::complex<float>>& after = mAnalyzer.Analyze(channel.after.data() + at);
    const float share = 1.0F / static_cast<float>(mChannels.size());
    for (std::size_t bin = 0; bin < before.size(); ++bin) {
        const std::size_t row = mRowOfBin[bin];
        if (row < kRows) {
            hop.spectra[0][row] += std::norm(before[bin]) * share;
            hop.spectra[1][row] += std::norm(after[bin]) * share;
            hop.spectra[2][row] += std::norm(before[bin] - after[bin]) * share;
        }
    }
}

void ColumnHistory::AddWaves(const Channel& channel, std::size_t at, HistoryColumn& hop) const {
    const std::size_t first = at + (mAnalyzer.Frames() - mHopFrames) / 2;
    const double share = 1.0 / static_cast<double>(mHopFrames * mChannels.size());
    for (std::size_t i = first; i < first + mHopFrames; ++i) {
        const std::array<float, 3> samples = {channel.before[i], channel.after[i],
                                              channel.before[i] - channel.after[i]};
        for (std::size_t version = 0; version < kVersions.size(); ++version) {
            HistoryColumn::Wave& wave = hop.waves[version];
            const float sample = samples[version];
            wave.least = std::min(wave.least, sample);
            wave.most = std::max(wave.most, sample);
            wave.power += static_cast<double>(sample) * static_cast<double>(sample) * share;
        }
    }
}

void ColumnHistory::Append(HistoryColumn&& hop) {
    ++mHops;
    if (!mColumns.empty() && mColumns.back().hops < mHopsPerColumn) {
        Merge(mColumns.back(), hop);
        return;
    }
    if (mColumns.size() == kMostColumns) {
        HalveColumns();
    }
    mColumns.push_back(std::move(hop));
}

void ColumnHistory::HalveColumns() {
    for (std::size_t i = 0; i < kMostColumns / 2; ++i) {
        HistoryColumn merged = std::move(mColumns[2 * i]);
        Merge(merged, mColumns[2 * i + 1]);
        mColumns[i] = std::move(merged);
    }
    mColumns.resize(kMostColumns / 2);
    mHopsPerColumn *= 2.0;
}
