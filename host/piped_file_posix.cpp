#include "host/piped_file.h"

#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "host/container.h"
#include "host/failure.h"
#include "host/media/media_source.h"
#include "host/open_recording.h"
#include "host/wav_stream.h"

namespace {

/// Enough to tell the formats of media files apart.
constexpr std::size_t kMediaStartBytes = 4096;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// A file that has come through a pipe, in a temporary file without a name.
class SpooledFile : public AudioSource {
public:
    SpooledFile(ByteInput& input, const ReadOptions& options) : mFile(std::tmpfile()) {
        std::vector<char> bytes(1 << 16);
        bool stored = mFile != nullptr;
        while (const std::size_t read = stored ? input.Read(bytes.data(), bytes.size()) : 0) {
            stored = std::fwrite(bytes.data(), 1, read, mFile.get()) == read;
        }
        if (!stored || std::fflush(mFile.get()) != 0) {
            throw Failure(input.Name(), "cannot be stored in a temporary file", errno);
        }
        mReader = OpenRecording("/proc/self/fd/" + std::to_string(fileno(mFile.get())), 0, options,
                                input.Name());
    }

    const AudioFormat& Format() const override { return mReader->Format(); }
    std::optional<std::int64_t> Frames() const override { return mReader->Frames(); }
    std::size_t Read(short* samples, std::size_t frames) override {
        return mReader->Read(samples, frames);
    }
    std::size_t Read(float* samples, std::size_t frames) override {
        return mReader->Read(samples, frames);
    }

private:
    std::unique_ptr<std::FILE, CloseFile> mFile;
    std::unique_ptr<AudioSource> mReader;
};

}  // namespace

std::unique_ptr<AudioSource> OpenPiped(std::unique_ptr<ByteInput> input,
                                       const ReadOptions& options) {
    const std::string start = input->Peek(kContainerBytes);
    if (start.empty()) {
        throw Failure(input->Name(), "contains no audio");
    }
    const Container container = ContainerOf(start);
    if (container == Container::kWav && start.compare(0, 4, "RIFX") != 0) {
        return std::make_unique<WavStreamReader>(std::move(input), options);
    }
    const bool isFile = container != Container::kNone || start.compare(0, 3, "ID3") == 0 ||
                        BeginsLikeMedia(input->Peek(kMediaStartBytes));
    if (!isFile) {
        throw Failure(input->Name(), std::string(kNoSound) + "; raw samples need --raw");
    }
    return std::make_unique<SpooledFile>(*input, options);
}

void CheckIsRaw(ByteInput& input) {
    if (ContainerOf(input.Peek(kContainerBytes)) != Container::kNone) {
        throw Failure(input.Name(), "is a WAV, FLAC or Ogg file, not raw samples: omit --raw");
    }
}
