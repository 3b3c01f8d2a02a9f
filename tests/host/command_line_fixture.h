#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "host/command_line.h"
#include "sound_files.h"
#include "support/temp_dir.h"

using Words = std::vector<std::string>;

/// The result of a command line.
struct Outcome {
    int status;
    std::string out;
    std::string err;
    std::string progress;
};

/// Runs command lines in this process.
inline Outcome RunHost(const Words& words) {
    std::vector<const char*> argv = {"audio-filter"};
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    std::ostringstream out;
    std::ostringstream err;
    std::ostringstream progress;
    const int status = RunCommandLine(static_cast<int>(argv.size()), argv.data(), out, err,
                                      {&progress, [] { return 80; }, ""});
    return {status, out.str(), err.str(), progress.str()};
}

class CommandLineTest : public testing::Test {
protected:
    std::string File(const std::string& name) { return dir.File(name); }

    template <typename Sample>
    std::string Record(const std::string& name, int format, int rate, int channels,
                       double seconds = 1.0) {
        const auto frames = static_cast<std::size_t>(seconds * rate);
        const std::vector<float> signal = Bursts(frames * static_cast<std::size_t>(channels), rate);
        WriteSound<Sample>(File(name), {rate, channels, format, As<Sample>(signal)});
        return File(name);
    }
    std::string Speech(const std::string& name = "in.wav", int rate = 32000) {
        return Record<short>(name, SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate, 1);
    }

    TempDir dir;
};
