#include "classifier/twiddle_factors.h"

#include <atomic>
#include <bit>
#include <cmath>

#include "classifier/complex.h"

namespace audio_filter::internal {

namespace {

constexpr std::size_t kSharedTables = std::bit_width(TwiddleFactors::kWidestShared);

/// Indexed by the exponent of the widest stage. Never freed: a host may start a stream while the
/// process is already ending.
constinit std::atomic<const TwiddleFactors*> gShared[kSharedTables] = {};

}  // namespace

std::shared_ptr<const TwiddleFactors> TwiddleFactors::UpTo(std::size_t widest) {
    if (widest > kWidestShared) {
        return std::make_shared<const TwiddleFactors>(widest);
    }
    std::atomic<const TwiddleFactors*>& shared = gShared[std::countr_zero(widest)];
    const TwiddleFactors* table = shared.load(std::memory_order_acquire);
    if (table == nullptr) {
        auto built = std::make_unique<const TwiddleFactors>(widest);
        // Of several threads that build it at the same time, one publishes its table.
        if (shared.compare_exchange_strong(table, built.get(), std::memory_order_acq_rel)) {
            table = built.release();
        }
    }
    return {std::shared_ptr<const void>(), table};  // without an owner
}

TwiddleFactors::TwiddleFactors(std::size_t widest)
    : mTable(2 * widest, SplitComplexArray::kTwiddles) {
    const SplitComplex table = mTable.Begin();
    for (std::size_t half = 1; half <= widest; half *= 2) {
        const float angle = std::acos(-1.0F) / static_cast<float>(half);
        const complex step(std::cos(angle), std::sin(angle));
        complex w(1.0F, 0.0F);
        for (std::size_t k = half; k < 2 * half; ++k) {
            table.real[k] = w.real;
            table.imag[k] = w.imag;
            w = w * step;
        }
    }
}

}  // namespace audio_filter::internal
