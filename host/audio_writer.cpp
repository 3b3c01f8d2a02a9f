#include "host/audio_writer.h"

#include <algorithm>
#include <array>
#include <vector>

#include "host/channels.h"
#include "host/failure.h"
#include "host/media/media_output.h"
#include "host/media_extensions.h"

namespace {

/// The longest audio that a plain WAV header can state, with room for the headers.
constexpr std::int64_t kLargestWavBytes = 0xFFFF0000;

/// What a file extension stands for.
struct SoundFormat {
    const char* extension;
    int format;         ///< libsndfile's
    const char* codec;  ///< the one it holds
    OutputBits wide;    ///< how floats are written unless told
};

constexpr std::array<SoundFormat, 5> kFormats = {{
    {".wav", SF_FORMAT_WAV, "pcm", OutputBits::kFloat},
    {".flac", SF_FORMAT_FLAC, "flac", OutputBits::k24},
    {".aiff", SF_FORMAT_AIFF, "pcm", OutputBits::k24},
    {".aif", SF_FORMAT_AIFF, "pcm", OutputBits::k24},
    {".caf", SF_FORMAT_CAF, "pcm", OutputBits::kFloat},
}};

const SoundFormat* SoundFormatOf(const std::string& path) {
    const std::string extension = LowerExtension(path);
    const auto* const found =
        std::find_if(kFormats.begin(), kFormats.end(),
                     [&](const SoundFormat& format) { return extension == format.extension; });
    return found == kFormats.end() ? nullptr : found;
}

OutputBits BitsFor(const SoundFormat& sound, const AudioFormat& format,
                   const OutputOptions& options) {
    return options.bits.value_or(format.samples == SampleFormat::kS16 ? OutputBits::k16
                                 : format.is24Bit                     ? OutputBits::k24
                                                                      : sound.wide);
}

bool FitsWav(const AudioFormat& format, OutputBits bits, std::optional<std::int64_t> frames) {
    const std::int64_t sampleBytes = bits == OutputBits::k16 ? 2 : bits == OutputBits::k24 ? 3 : 4;
    return frames && *frames <= kLargestWavBytes / (sampleBytes * format.channels);
}

int FileFormat(const SoundFormat& sound, const AudioFormat& format, OutputBits bits,
               std::optional<std::int64_t> frames) {
    const int samples = bits == OutputBits::k16   ? SF_FORMAT_PCM_16
                        : bits == OutputBits::k24 ? SF_FORMAT_PCM_24
                                                  : SF_FORMAT_FLOAT;
    if (sound.format != SF_FORMAT_WAV) {
        return sound.format | samples;
    }
    if (!FitsWav(format, bits, frames)) {
        return SF_FORMAT_RF64 | samples;
    }
    return (format.channels > 2 ? SF_FORMAT_WAVEX : SF_FORMAT_WAV) | samples;
}

/// The loudspeakers of each number of channels, as WAV files order them.
constexpr std::array<std::array<int, kMostChannels>, kMostChannels + 1> kSoundSpeakers = {{
    {},
    {SF_CHANNEL_MAP_CENTER},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_REAR_LEFT,
     SF_CHANNEL_MAP_REAR_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_REAR_LEFT,
     SF_CHANNEL_MAP_REAR_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_LFE,
     SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_LFE,
     SF_CHANNEL_MAP_REAR_CENTER, SF_CHANNEL_MAP_SIDE_LEFT, SF_CHANNEL_MAP_SIDE_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_LFE,
     SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT, SF_CHANNEL_MAP_SIDE_LEFT,
     SF_CHANNEL_MAP_SIDE_RIGHT},
}};

std::string NoSuchOutput(const std::string& path) {
    const std::string extension = LowerExtension(path);
    if (extension == ".amr" || extension == ".3gp") {
        return "AMR can be read but not written: choose another extension, such as .m4a";
    }
    return IsMediaOutput("any.mp4")
               ? "the output must be a file whose extension names its format, such as .wav or .mp4"
               : "the output must be a .wav, .flac, .aiff or .caf file; this build lacks "
                 "AUDIO_FILTER_MEDIA, which writes other formats";
}

/// FLAC stores rates up to 65535 Hz in Hz, and higher ones in units of 10 Hz.
bool FitsFlac(int sampleRate) {
    return sampleRate <= 0xFFFF || (sampleRate <= 655350 && sampleRate % 10 == 0);
}

}  // namespace

void AudioWriter::Close::operator()(SNDFILE* file) const {
    sf_close(file);
}

void AudioWriter::CheckPath(const std::string& path) {
    if (SoundFormatOf(path) == nullptr) {
        throw Failure(path, NoSuchOutput(path));
    }
    PartialFile::CheckPath(path);
}

/// Refuses what the file cannot hold, before it is created.
const std::string& AudioWriter::Suited(const std::string& path, const AudioFormat& format,
                                       const OutputOptions& options) {
    CheckPath(path);
    const SoundFormat& sound = *SoundFormatOf(path);
    if (!options.codec.empty() && options.codec != sound.codec) {
        throw Failure(path, std::string(sound.extension) + " files are written as " + sound.codec +
                                " only, not as " + options.codec);
    }
    if (options.bitRate) {
        throw Failure(path, "--bitrate is for lossy codecs, not for " + std::string(sound.codec));
    }
    if (sound.format == SF_FORMAT_FLAC && BitsFor(sound, format, options) == OutputBits::kFloat) {
        throw Failure(path, "FLAC cannot store floats; use --bits 24, or a .wav file");
    }
    if (sound.format == SF_FORMAT_FLAC && !FitsFlac(format.sampleRate)) {
        throw Failure(path, "FLAC cannot store " + std::to_string(format.sampleRate) +
                                " Hz; use a .wav file");
    }
    return path;
}

AudioWriter::AudioWriter(const std::string& path, const AudioFormat& format,
                         std::optional<std::int64_t> frames, const OutputOptions& options,
                         FileTags tags, bool replace)
    : mTags(std::move(tags)),
      mPartial(Suited(path, format, options), replace),
      mChannels(static_cast<std::size_t>(format.channels)) {
    const SoundFormat& sound = *SoundFormatOf(path);
    const OutputBits bits = BitsFor(sound, format, options);
    mWritesFloat = bits == OutputBits::kFloat;
    SF_INFO info = {};
    info.samplerate = format.sampleRate;
    info.channels = format.channels;
    info.format = FileFormat(sound, format, bits, frames);
    mFile.reset(mPartial.File().Open(info));
    if (!mFile) {
        mPartial.Fail();
    }
    // The PEAK chunk contains a time stamp: equal audio would not give equal bytes.
    sf_command(mFile.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(mFile.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    sf_command(mFile.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    if (const std::size_t room = RoomFor(mTags.flacBlocks); room > 0) {
        sf_set_string(mFile.get(), SF_STR_COMMENT, std::string(room, ' ').c_str());
    }
    if (format.channels > 2) {
        std::array<int, kMostChannels> speakers = kSoundSpeakers[mChannels];
        sf_command(mFile.get(), SFC_SET_CHANNEL_MAP_INFO, speakers.data(),
                   static_cast<int>(mChannels * sizeof(int)));
    }
}

void AudioWriter::Write(const short* samples, std::size_t frames) {
    if (mWritesFloat) {  // libsndfile would not scale them
        std::vector<float> floats(frames * mChannels);
        std::transform(samples, samples + floats.size(), floats.begin(),
                       [](short sample) { return ToFloat(sample); });
        Write(floats.data(), frames);
        return;
    }
    const auto count = static_cast<sf_count_t>(frames);
    if (sf_writef_short(mFile.get(), samples, count) != count) {
        mPartial.Fail();
    }
}

void AudioWriter::Write(const float* samples, std::size_t frames) {
    const auto count = static_cast<sf_count_t>(frames);
    if (sf_writef_float(mFile.get(), samples, count) != count) {
        mPartial.Fail();
    }
}

void AudioWriter::Commit() {
    const bool sound = sf_error(mFile.get()) == SF_ERR_NO_ERROR;
    const bool closed = sf_close(mFile.release()) == 0;
    if (!closed || !sound || !PutTags()) {
        mPartial.Fail();
    }
    mPartial.Commit();
}

bool AudioWriter::PutTags() {
    return (mTags.wavChunks.empty() || AppendWavChunks(mPartial.File(), mTags.wavChunks)) &&
           (mTags.flacBlocks.empty() || PutFlacBlocks(mPartial.File(), mTags.flacBlocks));
}

bool IsSoundOutput(const std::string& path) {
    return SoundFormatOf(path) != nullptr;
}
