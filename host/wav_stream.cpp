#include "host/wav_stream.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <utility>
#include <vector>

#include "host/channels.h"
#include "host/failure.h"
#include "host/file_bytes.h"
#include "host/wav_chunks.h"

namespace {

constexpr std::size_t kPcm = 1;
constexpr std::size_t kIeeeFloat = 3;
constexpr std::size_t kExtensible = 0xFFFE;

/// A sample of 1 to 4 bytes as the upper bits of an integer, or of 4 or 8 bytes as a float.
float Decoded(const std::string& bytes, bool isFloat) {
    const std::uint64_t bits = LittleEndian(bytes);
    if (isFloat) {
        return bytes.size() == 4 ? std::bit_cast<float>(static_cast<std::uint32_t>(bits))
                                 : static_cast<float>(std::bit_cast<double>(bits));
    }
    const auto upper = static_cast<std::uint32_t>(bits << (32 - 8 * bytes.size()));
    constexpr std::uint32_t kMiddle = 0x8000'0000;  // bytes are unsigned
    const auto value = static_cast<std::int32_t>(bytes.size() == 1 ? upper ^ kMiddle : upper);
    return static_cast<float>(value) / 2147483648.0F;
}

std::string Field(std::uint64_t value, std::size_t bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes; ++i) {
        text += static_cast<char>(value >> (8 * i));
    }
    return text;
}

}  // namespace

WavStreamReader::WavStreamReader(std::unique_ptr<ByteInput> input, ReadOptions options)
    : mInput(std::move(input)), mOptions(std::move(options)) {
    ReadHeader();
}

void WavStreamReader::ReadHeader() {
    Bytes(12);
    std::uint64_t longSize = 0;  // of the audio, if 32 bits are too few
    while (true) {
        const std::string id = Bytes(4);
        std::uint64_t size = LittleEndian(Bytes(4));
        if (id == "data") {
            size = size == 0xFFFF'FFFF && longSize > 0 ? longSize : size;
            if (mSampleBytes == 0) {
                Fail("states no sample format");
            }
            if (!IsUnknownWavSize(size)) {
                mFrames = static_cast<std::int64_t>(
                    size / (mSampleBytes * static_cast<std::size_t>(mFormat.channels)));
            }
            return;
        }
        std::string start = Bytes(std::min<std::uint64_t>(size, 40));
        Skip(size + size % 2 - start.size());
        if (id == "ds64") {
            start.resize(16);
            longSize = LittleEndian(start.substr(8, 8));
        } else if (id == "fmt ") {
            TakeFormat(start);
        }
    }
}

void WavStreamReader::TakeFormat(const std::string& chunk) {
    std::string text = chunk;
    text.resize(40);
    const auto number = [&](std::size_t at, std::size_t bytes) {
        return static_cast<std::size_t>(LittleEndian(text.substr(at, bytes)));
    };
    const std::size_t tag = number(0, 2) == kExtensible ? number(24, 2) : number(0, 2);
    const std::size_t channels = number(2, 2);
    const std::size_t rate = number(4, 4);
    const std::size_t bits = number(14, 2);
    if (channels > kMostChannels) {
        Fail(TooManyChannels(static_cast<int>(channels)));
    }
    mIsFloat = tag == kIeeeFloat;
    const bool integer = tag == kPcm && bits % 8 == 0 && bits >= 8 && bits <= 32;
    const bool supported = integer || (mIsFloat && (bits == 32 || bits == 64));
    if (!supported || channels == 0 || rate == 0 || rate > 0x7FFF'FFFF ||
        number(12, 2) != channels * bits / 8) {
        Fail("is compressed or damaged: only integers and floats can be read from a pipe");
    }
    mSampleBytes = bits / 8;
    mFormat = {static_cast<int>(rate), static_cast<int>(channels),
               bits > 16 ? SampleFormat::kFloat : SampleFormat::kS16, bits == 24};
}

std::string WavStreamReader::Bytes(std::size_t count) {
    std::string bytes(count, '\0');
    if (mInput->Read(bytes.data(), count) < count) {
        Fail("is truncated");
    }
    return bytes;
}

void WavStreamReader::Skip(std::uint64_t count) {
    while (count > 0) {
        const auto now = static_cast<std::size_t>(std::min<std::uint64_t>(count, 65536));
        Bytes(now);
        count -= now;
    }
}

std::size_t WavStreamReader::Read(short* samples, std::size_t frames) {
    return Decode(samples, frames);
}

std::size_t WavStreamReader::Read(float* samples, std::size_t frames) {
    return Decode(samples, frames);
}

template <typename Sample>
std::size_t WavStreamReader::Decode(Sample* samples, std::size_t frames) {
    if (mFrames) {
        frames = std::min(frames, static_cast<std::size_t>(*mFrames - mRead));
    }
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    const std::size_t frameBytes = channels * mSampleBytes;
    std::string bytes(frames * frameBytes, '\0');
    const std::size_t got = mInput->Read(bytes.data(), bytes.size());
    const std::size_t read = got / frameBytes;
    for (std::size_t i = 0; i < read * channels; ++i) {
        samples[i] =
            FromFloat<Sample>(Decoded(bytes.substr(i * mSampleBytes, mSampleBytes), mIsFloat));
    }
    mRead += static_cast<std::int64_t>(read);
    const bool cut = read < frames && (mFrames || got % frameBytes != 0);
    if (cut && !mInput->Interrupted()) {
        if (mOptions.strict) {
            Fail("is truncated");
        }
        char text[40];
        std::snprintf(text, sizeof(text), "%.2f s",
                      static_cast<double>(mRead) / mFormat.sampleRate);
        mOptions.warn(Failure(mInput->Name(), std::string("is cut off after ") + text).what());
    }
    if (read < frames) {
        mFrames = mRead;
    }
    if (frames == 0 && mRead == 0) {
        Fail("contains no audio");
    }
    return read;
}

void WavStreamReader::Fail(const std::string& reason) const {
    throw Failure(mInput->Name(), reason);
}

std::string WavStreamHeader(const AudioFormat& format) {
    const bool s16 = format.samples == SampleFormat::kS16;
    const std::uint64_t sampleBytes = s16 ? 2 : 4;
    const auto channels = static_cast<std::uint64_t>(format.channels);
    const auto rate = static_cast<std::uint64_t>(format.sampleRate);
    return "RIFF" + Field(0xFFFF'FFFF, 4) + "WAVEfmt " + Field(16, 4) +
           Field(s16 ? kPcm : kIeeeFloat, 2) + Field(channels, 2) + Field(rate, 4) +
           Field(rate * channels * sampleBytes, 4) + Field(channels * sampleBytes, 2) +
           Field(8 * sampleBytes, 2) + "data" + Field(0xFFFF'FFFF, 4);
}
