#include "host/phase_pass.h"

#include <utility>

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/source_feed.h"

std::vector<std::vector<audio_filter::Stretch>> FindReversedChannels(Sources sources,
                                                                     const AudioFormat& format) {
    constexpr std::size_t kFrames = 4096;
    std::vector<std::vector<audio_filter::Stretch>> reversed;
    for (std::unique_ptr<AudioSource>& source : sources) {
        SourceFeed<float> feed(std::move(source),
                               {format.sampleRate, format.channels, SampleFormat::kFloat});
        audio_filter::PolarityScan scan(format.sampleRate);
        std::vector<float> block;
        while (const std::size_t frames = feed.Fill(kFrames)) {
            if (Interrupted()) {
                throw Failure("interrupted");
            }
            block.clear();
            feed.Take(frames, block);
            scan.Add(block.data(), frames);
        }
        reversed.push_back(scan.Finish());
    }
    return reversed;
}
