#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/media/libav.h"
#include "host/media/media_container.h"
#include "host/media/media_input.h"
#include "host/output_file.h"

/// A file that libavformat writes. Throws Failure when it cannot.
class MediaMux {
public:
    /// @param path in messages
    MediaMux(std::string path, const MediaContainer& container);
    ~MediaMux();
    MediaMux(const MediaMux&) = delete;
    MediaMux& operator=(const MediaMux&) = delete;

    /// Adds a cleaned track. @param original the stream that it replaces, if any. @return its index
    int AddEncoded(const AVCodecContext& codec, const AVStream* original);

    /// Adds a stream to copy. @return its index
    int AddCopy(const AVStream& original);

    /// Adds a cover picture in the way of the container. Some take it before the header, others as a packet.
    void AddPicture(const AVStream& original);

    /// Copies the tags of a file and its chapters.
    /// @param track whose tags count as the file's where a container has them for each stream; may be null
    void CopyTags(MediaInput& input, const AVStream* track);

    /// Writes the header, to memory where there is no file.
    void WriteHeader(OutputFile* file);

    /// Writes a packet of a stream. @param timeBase of its times; @param origin what they count from
    void Write(int stream, AVPacket& packet, AVRational timeBase, std::int64_t origin);

    /// Completes the file.
    void Finish();

private:
    struct Picture {
        int stream;
        const AVPacket* packet;
    };

    AVStream& NewStream();
    bool IsMatroska() const;
    std::int64_t DelayOf(const AVStream& stream, AVRational timeBase) const;
    void OpenIo(OutputFile* file);
    void KeepInOrder(int stream, AVPacket& packet);
    [[noreturn]] void Fail(int error) const;

    std::string mPath;
    const MediaContainer& mContainer;
    AVFormatContext* mContext = nullptr;
    IoPtr mIo;
    OutputFile* mFile = nullptr;
    std::vector<Picture> mPictures;
    std::vector<std::int64_t> mLast;  ///< decoding time of each stream's last packet
};

/// Whether a stream is a cover picture.
bool IsPicture(const AVStream& stream);

/// The MIME type of a cover picture.
const char* MimeOf(const AVStream& picture);

/// Whether a tag describes a file, not the recording in it.
bool IsOldFileTag(std::string_view key);

/// A picture as the tag that Ogg files carry.
std::string PictureTag(const AVStream& picture);
