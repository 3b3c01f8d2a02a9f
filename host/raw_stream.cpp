#include "host/raw_stream.h"

#include <algorithm>
#include <cstring>

#include "host/channels.h"
#include "host/failure.h"
#include "host/parse_number.h"

namespace {

/// Keeps the bytes of one second of eight floats well within an int.
constexpr int kHighestRate = 768000;

}  // namespace

std::optional<AudioFormat> ParseRawFormat(const std::string& text) {
    const std::size_t first = text.find(':');
    const std::size_t second = first == std::string::npos ? first : text.find(':', first + 1);
    if (second == std::string::npos) {
        return std::nullopt;
    }
    const std::string samples = text.substr(0, first);
    const std::optional<int> rate = ParseNumber<int>(text.substr(first + 1, second - first - 1));
    const std::optional<int> channels = ParseNumber<int>(text.substr(second + 1));
    if ((samples != "s16" && samples != "f32") || !rate || *rate < 1 || *rate > kHighestRate ||
        !channels || *channels < 1 || *channels > kMostChannels) {
        return std::nullopt;
    }
    return AudioFormat{*rate, *channels,
                       samples == "s16" ? SampleFormat::kS16 : SampleFormat::kFloat};
}

std::string RawFormatName(const AudioFormat& format) {
    return (format.samples == SampleFormat::kS16 ? "s16:" : "f32:") +
           std::to_string(format.sampleRate) + ":" + std::to_string(format.channels);
}

RawReader::RawReader(std::unique_ptr<ByteInput> input, const AudioFormat& format)
    : mInput(std::move(input)), mFormat(format) {}

std::size_t RawReader::Read(short* samples, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    if (mFormat.samples == SampleFormat::kS16) {
        return ReadBytes(reinterpret_cast<char*>(samples), frames, channels * sizeof(short));
    }
    std::vector<float> floats(frames * channels);
    const std::size_t read =
        ReadBytes(reinterpret_cast<char*>(floats.data()), frames, channels * sizeof(float));
    std::transform(floats.begin(), floats.begin() + static_cast<std::ptrdiff_t>(read * channels),
                   samples, FromFloat<short>);
    return read;
}

std::size_t RawReader::Read(float* samples, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    if (mFormat.samples == SampleFormat::kFloat) {
        return ReadBytes(reinterpret_cast<char*>(samples), frames, channels * sizeof(float));
    }
    std::vector<short> shorts(frames * channels);
    const std::size_t read =
        ReadBytes(reinterpret_cast<char*>(shorts.data()), frames, channels * sizeof(short));
    std::transform(shorts.begin(), shorts.begin() + static_cast<std::ptrdiff_t>(read * channels),
                   samples, [](short sample) { return ToFloat(sample); });
    return read;
}

std::size_t RawReader::ReadBytes(char* bytes, std::size_t frames, std::size_t frameBytes) {
    const std::size_t read = mInput->Read(bytes, frames * frameBytes);
    if (read % frameBytes != 0 && !mInput->Interrupted()) {
        throw Failure(mInput->Name(),
                      "ends inside a frame of " + std::to_string(frameBytes) + " bytes");
    }
    return read / frameBytes;
}

RawWriter::RawWriter(std::unique_ptr<ByteOutput> output, const AudioFormat& format)
    : mOutput(std::move(output)), mFormat(format) {}

void RawWriter::Write(const short* samples, std::size_t frames) {
    WriteBytes(samples, frames, sizeof(short));
}

void RawWriter::Write(const float* samples, std::size_t frames) {
    WriteBytes(samples, frames, sizeof(float));
}

void RawWriter::WriteBytes(const void* bytes, std::size_t frames, std::size_t sampleBytes) {
    mOutput->Write(static_cast<const char*>(bytes),
                   frames * static_cast<std::size_t>(mFormat.channels) * sampleBytes);
}

void RawWriter::Commit() {
    mOutput->Flush();
}
