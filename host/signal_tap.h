#pragma once

#include <vector>

/// Receives the signal of a job before and after cleaning, without the gain of a loudness target. Both streams begin
/// with the same frame and have the same length in the end; the blocks of one may run ahead of the other's.
class SignalTap {
public:
    virtual ~SignalTap() = default;

    /// Interleaved samples, full scale at 1.
    virtual void AddBefore(const std::vector<float>& block) = 0;
    virtual void AddAfter(const std::vector<float>& block) = 0;
};
