#include "classifier/twiddle_factors.h"

#include <cmath>
#include <map>
#include <mutex>

#include "classifier/complex.h"

namespace audio_filter::internal {

std::shared_ptr<const TwiddleFactors> TwiddleFactors::UpTo(std::size_t widest) {
    static std::mutex mutex;
    // Never destroyed: a host may start a stream while the process already ends.
    static auto& tables = *new std::map<std::size_t, std::weak_ptr<const TwiddleFactors>>;
    const std::lock_guard<std::mutex> lock(mutex);
    std::weak_ptr<const TwiddleFactors>& known = tables[widest];
    std::shared_ptr<const TwiddleFactors> table = known.lock();
    if (table == nullptr) {
        table = std::make_shared<const TwiddleFactors>(widest);
        known = table;
    }
    return table;
}

TwiddleFactors::TwiddleFactors(std::size_t widest)
    : mTable(2 * widest, SplitComplexArray::kTwiddles) {
    const SplitComplex table = mTable.Begin();
    for (std::size_t half = 1; half <= widest; half *= 2) {
        const float angle = std::acos(-1.0F) / static_cast<float>(half);
        const complex rotation(std::cos(angle), std::sin(angle));
        complex w(1.0F, 0.0F);
        for (std::size_t k = half; k < 2 * half; ++k) {
            table.real[k] = w.real;
            table.imag[k] = w.imag;
            w = w * rotation;
        }
    }
}

}  // namespace audio_filter::internal
