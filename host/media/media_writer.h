#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/audio_stream.h"
#include "host/media/media_container.h"
#include "host/media/media_input.h"
#include "host/media/media_mux.h"
#include "host/media/media_output.h"
#include "host/media/packet_merge.h"
#include "host/media/track_encoder.h"
#include "host/partial_file.h"

/// See MediaOutput: through libavformat. Cleaned tracks are encoded into spools; when the last one is complete, they are
/// interleaved with the copied streams.
class MediaWriter : public MediaOutput {
public:
    explicit MediaWriter(const MediaOutputJob& job);
    ~MediaWriter() override;

    std::unique_ptr<AudioSink> AddTrack(int track, const AudioFormat& format) override;
    const std::vector<std::string>& Notes() const override { return mNotes; }

private:
    class TrackSink;
    friend class TrackSink;

    struct Track {
        int index;  ///< in the input; -1 if it has none
        std::unique_ptr<TrackEncoder> encoder;
    };

    bool IsCleaned(int index) const;
    bool IsCopied(int index) const;
    void PlanCopies();
    void PlanCopy(int index);
    TrackFacts FactsOf(int index, const AudioFormat& format) const;
    std::int64_t StartOf(int track, const AudioFormat& format) const;
    TrackPlan PlanOf(int index, int track, const AudioFormat& format, AVCodecID codec) const;
    std::unique_ptr<MediaMux> MakeMux() const;
    void CheckHeader() const;
    void CommitTrack();
    int OutputOf(int index) const;
    RoutedPacket ReadCopied();
    void Mux();

    MediaOutputJob mJob;
    const MediaContainer& mContainer;
    std::unique_ptr<MediaInput> mInput;  ///< null for a pipe
    std::vector<int> mCleaned;           ///< indices of the tracks to clean
    std::vector<int> mCopied;
    std::vector<int> mPictures;
    std::vector<std::string> mNotes;
    std::vector<Track> mTracks;
    std::optional<PartialFile> mFile;
    std::size_t mCommitted = 0;
};
