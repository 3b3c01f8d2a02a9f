#include "host/loudness_meter.h"

#include <array>

#include "host/failure.h"

LoudnessMeter MakeLoudnessMeter(const AudioFormat& format, int mode) {
    LoudnessMeter meter(ebur128_init(static_cast<unsigned>(format.channels),
                                     static_cast<unsigned long>(format.sampleRate), mode));
    if (!meter) {
        throw Failure("cannot measure loudness at " + std::to_string(format.sampleRate) + " Hz");
    }
    // libebur128 has positions for up to 6 channels, and leaves further ones out.
    constexpr std::array kSixOne = {EBUR128_Mp180, EBUR128_Mp090, EBUR128_Mm090};
    constexpr std::array kSevenOne = {EBUR128_Mp135, EBUR128_Mm135, EBUR128_Mp090, EBUR128_Mm090};
    constexpr unsigned kFirst = 4;
    if (format.channels == 7) {
        for (unsigned i = 0; i < kSixOne.size(); ++i) {
            ebur128_set_channel(meter.get(), kFirst + i, kSixOne[i]);
        }
    } else if (format.channels == 8) {
        for (unsigned i = 0; i < kSevenOne.size(); ++i) {
            ebur128_set_channel(meter.get(), kFirst + i, kSevenOne[i]);
        }
    }
    return meter;
}
