#include "host/rate_converter.h"

#include <string>

#include "host/failure.h"

void RateConverter::Release::operator()(SRC_STATE* state) const {
    src_delete(state);
}

RateConverter::RateConverter(int fromRate, int toRate, int channels)
    : mRatio(static_cast<double>(toRate) / fromRate),
      mChannels(static_cast<std::size_t>(channels)) {
    int error = 0;
    mState.reset(src_new(SRC_SINC_MEDIUM_QUALITY, channels, &error));
    if (!mState || src_is_valid_ratio(mRatio) == 0) {
        throw Failure("cannot convert from " + std::to_string(fromRate) + " Hz to " +
                      std::to_string(toRate) + " Hz");
    }
}

RateConverter::~RateConverter() = default;

std::vector<float> RateConverter::Convert(const std::vector<float>& block, bool last) {
    std::vector<float> converted;
    const float none = 0.0F;  // libsamplerate ignores the end of the input at a null pointer
    SRC_DATA data = {};
    data.data_in = block.empty() ? &none : block.data();
    data.input_frames = static_cast<long>(block.size() / mChannels);
    data.src_ratio = mRatio;
    data.end_of_input = last ? 1 : 0;
    do {
        constexpr std::size_t kRoomFrames = 4096;
        const std::size_t filled = converted.size();
        converted.resize(filled + kRoomFrames * mChannels);
        data.data_out = converted.data() + filled;
        data.output_frames = kRoomFrames;
        const int error = src_process(mState.get(), &data);
        if (error != 0) {
            throw Failure(std::string("cannot convert the sample rate: ") + src_strerror(error));
        }
        converted.resize(filled + static_cast<std::size_t>(data.output_frames_gen) * mChannels);
        data.data_in += static_cast<std::size_t>(data.input_frames_used) * mChannels;
        data.input_frames -= data.input_frames_used;
    } while (data.input_frames > 0 || data.output_frames_gen > 0);
    return converted;
}
