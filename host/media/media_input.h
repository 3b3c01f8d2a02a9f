#pragma once

#include <chrono>
#include <fstream>
#include <string>
#include <vector>

#include "host/media/libav.h"

/// A media file, read through libavformat with the limits that SECURITY.md states: formats from a list, this file
/// alone, so many streams, so much time a packet. Throws Failure for a file that cannot be read.
class MediaInput {
public:
    /// What is opened to find out about the streams.
    enum class Probing {
        kAudio,  ///< decoders of audio
        kAll     ///< decoders of video, too, without which packets may lack their order
    };

    /// @param name in messages
    MediaInput(const std::string& path, std::string name, Probing probing);
    ~MediaInput();
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    AVFormatContext& Context() { return *mContext; }
    AVStream& Stream(int index) const { return *mContext->streams[index]; }

    /// The indices of the audio streams.
    std::vector<int> AudioTracks() const;

    /// The index of an audio stream. Throws Failure if there is none.
    /// @param track counts audio streams from 1; 0 for the default one
    int AudioTrack(int track) const;

    /// Reads the next packet of any stream. @return 0; AVERROR_EOF at the end; another error of libav
    int ReadPacket(AVPacket& packet);

    /// Whether timestamps mean what they say; else their start is arbitrary.
    bool IsAbsolute() const;

    /// Whether the file is shorter than it states.
    bool IsCut() const { return mIsCut; }

    /// Whether there is video beside the sound, other than a picture.
    bool HasVideo() const;

    /// What timestamps count from, in AV_TIME_BASE units: the start of formats whose own is arbitrary.
    std::int64_t Origin() const;

    [[noreturn]] void Fail(const std::string& reason) const;

private:
    static int Read(void* self, std::uint8_t* bytes, int count);
    static std::int64_t Seek(void* self, std::int64_t offset, int whence);
    [[noreturn]] void FailToOpen(int error) const;
    void GiveTime();

    std::string mName;
    std::ifstream mFile;
    std::int64_t mSize = 0;
    bool mIsCut = false;
    std::chrono::steady_clock::time_point mDeadline;
    IoPtr mIo;
    AVFormatContext* mContext = nullptr;
};
