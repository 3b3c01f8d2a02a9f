#pragma once

#include <vector>

#include "host/audio_format.h"
#include "host/page/column_history.h"
#include "host/page/excerpts.h"
#include "host/signal_tap.h"

/// What a report shows of a signal: pictures of all of it, and parts to listen to. Of bounded size for a signal of any
/// length.
class SignalHistory : public SignalTap {
public:
    explicit SignalHistory(const AudioFormat& format);

    void AddBefore(const std::vector<float>& block) override;
    void AddAfter(const std::vector<float>& block) override;

    /// Ends the signal.
    void Finish();

    const ColumnHistory& Columns() const { return mColumns; }
    const Excerpts& Parts() const { return mExcerpts; }

private:
    std::vector<float> mWaiting;  ///< frames before cleaning whose cleaned ones have not arrived
    ColumnHistory mColumns;
    Excerpts mExcerpts;
};
