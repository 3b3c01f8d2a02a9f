#pragma once

#include <memory>

#include "host/audio_stream.h"
#include "host/byte_stream.h"
#include "host/read_options.h"

/// Opens what comes through a pipe: WAV as it arrives, FLAC and Ogg once all of it is there. Throws
/// Failure for anything else.
std::unique_ptr<AudioSource> OpenPiped(std::unique_ptr<ByteInput> input,
                                       const ReadOptions& options);

/// Throws Failure if raw samples begin like a file.
void CheckIsRaw(ByteInput& input);
