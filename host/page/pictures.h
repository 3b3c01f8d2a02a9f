#pragma once

#include <optional>
#include <string>

#include "host/audio_format.h"
#include "host/clean.h"
#include "host/page/signal_history.h"
#include "host/partial_file.h"

/// The report page and the spectrogram that a job asks for, if any. Throws Failure when they cannot be written; an
/// existing file is replaced by Write only.
class Pictures {
public:
    /// Opens the files. Throws Failure, also if one is an input or the output.
    Pictures(const CleanJob& job, const AudioFormat& format);

    /// Receives the signal of the job; null if no picture is wanted.
    SignalTap* Tap() { return mHistory ? &*mHistory : nullptr; }

    /// Writes the files, after the end of the signal.
    void Write(const Report& report);

private:
    std::optional<PartialFile> mPage;
    std::optional<PartialFile> mSpectrogram;
    std::optional<SignalHistory> mHistory;
};
