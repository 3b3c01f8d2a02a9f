#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/audio_stream.h"
#include "host/clean.h"
#include "host/media/media_output.h"

using Sources = std::vector<std::unique_ptr<AudioSource>>;

/// Whether all inputs are regular files, which can be read again.
bool AreFiles(const CleanJob& job);

/// Opens the inputs. Files beside a live recording end when a signal ends the recording. Throws
/// Failure, also if an input is the output.
Sources OpenInputs(const CleanJob& job);

/// Opens the output. Throws Failure.
std::unique_ptr<AudioSink> OpenOutput(const CleanJob& job, const AudioFormat& format,
                                      std::optional<std::int64_t> frames);

/// The output of a job whose extension is one of libavformat's.
MediaOutputJob MediaJobOf(const CleanJob& job);

/// Throws Failure if a file that is written beside the output, such as a log, would overwrite a recording.
void CheckSideFile(const CleanJob& job, const std::string& path);
