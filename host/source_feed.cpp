#include "host/source_feed.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "host/channels.h"

template <typename Sample>
SourceFeed<Sample>::SourceFeed(std::unique_ptr<AudioSource> source, const AudioFormat& format)
    : mSource(std::move(source)), mFormat(format) {
    const int own = mSource->Format().sampleRate;
    if (own != format.sampleRate) {
        mConverter.emplace(own, format.sampleRate, format.channels);
    }
}

template <typename Sample>
std::optional<std::int64_t> SourceFeed<Sample>::Frames() const {
    const std::optional<std::int64_t> frames = mSource->Frames();
    if (!frames) {
        return std::nullopt;
    }
    const double ratio = static_cast<double>(mFormat.sampleRate) / mSource->Format().sampleRate;
    return static_cast<std::int64_t>(std::llround(static_cast<double>(*frames) * ratio));
}

template <typename Sample>
std::size_t SourceFeed<Sample>::Fill(std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    while (!mEnded && Held() < frames * channels) {
        ReadMore(frames);
    }
    return std::min(frames, Held() / channels);
}

template <typename Sample>
void SourceFeed<Sample>::Peek(std::size_t frames, std::vector<Sample>& block) const {
    const std::size_t count = std::min(frames * static_cast<std::size_t>(mFormat.channels), Held());
    const auto begin = mAhead.begin() + static_cast<std::ptrdiff_t>(mTaken);
    block.insert(block.end(), begin, begin + static_cast<std::ptrdiff_t>(count));
}

template <typename Sample>
void SourceFeed<Sample>::Take(std::size_t frames, std::vector<Sample>& block) {
    const std::size_t wanted = frames * static_cast<std::size_t>(mFormat.channels);
    const std::size_t start = block.size();
    Peek(frames, block);
    mTaken += block.size() - start;
    block.resize(start + wanted);
    if (2 * mTaken >= mAhead.size()) {  // not each time: what is read ahead may be long
        mAhead.erase(mAhead.begin(), mAhead.begin() + static_cast<std::ptrdiff_t>(mTaken));
        mTaken = 0;
    }
}

template <typename Sample>
void SourceFeed<Sample>::ReadMore(std::size_t frames) {
    const AudioFormat& own = mSource->Format();
    const auto ownChannels = static_cast<std::size_t>(own.channels);
    if (!mConverter && own.channels == mFormat.channels && own.samples == mFormat.samples) {
        const std::size_t held = mAhead.size();
        mAhead.resize(held + frames * ownChannels);
        const std::size_t read = mSource->Read(mAhead.data() + held, frames);
        mAhead.resize(held + read * ownChannels);
        mEnded = read == 0;
        return;
    }
    std::vector<float> block(frames * ownChannels);
    const std::size_t read = mSource->Read(block.data(), frames);
    block.resize(read * ownChannels);
    mEnded = read == 0;
    block = ConvertChannels(std::move(block), own.channels, mFormat.channels);
    if (mConverter) {
        block = mConverter->Convert(block, mEnded);
    }
    std::transform(block.begin(), block.end(), std::back_inserter(mAhead), FromFloat<Sample>);
}

template class SourceFeed<short>;
template class SourceFeed<float>;
