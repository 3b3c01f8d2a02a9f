/// Cost per stream by the number of filters, and memory by part of a filter. Mono 16-bit streams at
/// 32000 Hz with everything on, one block of each in turn.

#include <malloc.h>

#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "bench/programs/stopwatch.h"
#include "support/signals.h"

namespace {

constexpr int kBlocks = 64 * 120;  ///< of all filters together
constexpr int kRuns = 5;

using Filters = std::vector<std::unique_ptr<AudioFilter>>;

Filters Make(int count) {
    Filters filters;
    for (int i = 0; i < count; ++i) {
        filters.push_back(std::make_unique<AudioFilter>());
        ProcessSwitchMap switches = {{AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}};
        filters.back()->Init(32000, 1, SAMPLE_FMT_S16, &switches);
    }
    return filters;
}

/// Microseconds of this thread for a block, over filters taken in turn.
double PerBlock(Filters& filters, const std::vector<short>& signal) {
    std::vector<short> out(640);
    const std::vector<AVSourceType> sources = {AV_SOURCE_MICROPHONE};
    AVParam param;
    const double start = ThreadMicroseconds();
    for (std::size_t block = 0; block < kBlocks; ++block) {
        int size = 640;
        filters[block % filters.size()]->Process(
            reinterpret_cast<const char*>(&signal[block / filters.size() % 500 * 320]),
            reinterpret_cast<char*>(out.data()), size, sources, param, 0);
    }
    return (ThreadMicroseconds() - start) / kBlocks;
}

double Best(int count, const std::vector<short>& signal, int threads) {
    double best = 1e9;
    for (int run = 0; run < kRuns; ++run) {
        std::vector<double> each(static_cast<std::size_t>(threads));
        std::vector<std::thread> running;
        for (double& result : each) {
            running.emplace_back([&] {
                Filters filters = Make((count + threads - 1) / threads);
                PerBlock(filters, signal);  // warm-up
                result = PerBlock(filters, signal);
            });
        }
        for (std::thread& thread : running) {
            thread.join();
        }
        best = std::min(best, *std::max_element(each.begin(), each.end()));
    }
    return best;
}

std::size_t InUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Heap that an operation takes and keeps.
template <typename Operation>
double KiBOf(const Operation& operation) {
    const std::size_t before = InUse();
    operation();
    return static_cast<double>(InUse() - before) / 1024.0;
}

/// Measures each part alone. The first detector of the process also builds the twiddle factors, which
/// all detectors share; this runs before any other.
void PrintMemory() {
    AudioClassifier first;
    AudioClassifier second;
    AudioDenoise denoise;
    const double withTable = KiBOf([&] { first.Init(1, 32000, SAMPLE_FMT_S16); });
    const double detector = KiBOf([&] { second.Init(1, 32000, SAMPLE_FMT_S16); });
    const double suppressor = KiBOf([&] { denoise.Init(32000, 1, SAMPLE_FMT_S16, 3); });
    Filters filters;
    const double filter = KiBOf([&] { filters = Make(1); });
    std::printf("| part of a mono filter at 32000 Hz | KiB |\n|---|---|\n");
    std::printf("| the object | %.1f |\n", static_cast<double>(sizeof(AudioFilter)) / 1024.0);
    std::printf("| the mixer in it | %.1f |\n", static_cast<double>(sizeof(AudioMixing)) / 1024.0);
    std::printf("| work buffers | %.1f |\n",
                2.0 * static_cast<double>(filters[0]->mBufferBytes) / 1024.0);
    std::printf("| noise suppression, one channel | %.1f |\n", suppressor);
    std::printf("| music detection, its own suppressor included | %.1f |\n", detector);
    std::printf("| all of it | %.1f |\n", filter);
    std::printf("| twiddle factors, once per process | %.1f |\n\n", withTable - detector);
}

}  // namespace

int main() {
    PrintMemory();
    std::mt19937 random(1);
    const std::vector<short> signal = As<short>(NoisySpeech(random, 500 * 320, 32000.0));
    std::printf("| filters | threads | us a block | relative to 1 |\n|---|---|---|---|\n");
    double one = 0.0;
    for (const int threads : {1, 2}) {
        for (const int count : {1, 8, 64, 256}) {
            const double cost = Best(count, signal, threads);
            one = one == 0.0 ? cost : one;
            std::printf("| %d | %d | %.2f | %.2f |\n", count, threads, cost, cost / one);
        }
    }

    return 0;
}
