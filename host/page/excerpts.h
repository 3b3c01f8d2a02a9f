#pragma once

#include <cstddef>
#include <vector>

/// A part of a recording to listen to: one or two channels, interleaved, at the rate of the recording.
struct Excerpt {
    double start;  ///< s
    std::vector<short> before;
    std::vector<short> after;
    double score;  ///< how much there is to hear
};

/// Keeps a short recording whole, and of a longer one the two pieces of 10 s in which the most can be heard: speech
/// well above the noise, and noise that is gone afterwards.
class Excerpts {
public:
    static constexpr double kPieceSeconds = 10.0;
    static constexpr std::size_t kPieces = 2;

    Excerpts(int sampleRate, int channels);

    /// @param before, after interleaved frames of equal number
    void Add(const std::vector<float>& before, const std::vector<float>& after);

    /// Ends the recording.
    void Finish();

    /// In order of time.
    const std::vector<Excerpt>& Kept() const { return mKept; }

    /// 1 or 2; of recordings with more channels the mean.
    int Channels() const { return static_cast<int>(mChannels); }

private:
    void AddFrame(const float* frame, std::vector<short>& samples) const;
    void ClosePiece();

    int mSampleRate;
    std::size_t mSourceChannels;
    std::size_t mChannels;
    std::size_t mPieceSamples;
    std::size_t mFrames = 0;
    Excerpt mCurrent = {};
    std::vector<Excerpt> mKept;
};
