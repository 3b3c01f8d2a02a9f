#pragma once

#include <optional>
#include <string>

#include "host/clean.h"

/// Reads "microphone=talk.wav", "0=talk.wav" or "2=bed.ogg". @return none for anything else
std::optional<InputFile> ParseSource(const std::string& text);

/// Reads "debug", "info", "warn" or "error". @return none for anything else
std::optional<ProcessLogLevel> ParseLogLevel(const std::string& text);

/// Reads a loudness in LUFS, -70..-5, or "off". @return none for anything else; the inner one is none for "off"
std::optional<std::optional<double>> ParseLoudness(const std::string& text);
