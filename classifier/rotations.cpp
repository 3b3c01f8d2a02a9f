#include "classifier/rotations.h"

#include <cmath>
#include <map>
#include <mutex>

#include "classifier/complex.h"

std::shared_ptr<const Rotations> Rotations::UpTo(std::size_t widest) {
    static std::mutex mutex;
    // Never destroyed: a host may start a stream while the process already ends.
    static auto& tables = *new std::map<std::size_t, std::weak_ptr<const Rotations>>;
    const std::lock_guard<std::mutex> lock(mutex);
    std::weak_ptr<const Rotations>& known = tables[widest];
    std::shared_ptr<const Rotations> table = known.lock();
    if (table == nullptr) {
        table = std::make_shared<const Rotations>(widest);
        known = table;
    }
    return table;
}

Rotations::Rotations(std::size_t widest) : mTable(2 * widest, SplitArray::kRotations) {
    const Elements table = mTable.Begin();
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
