#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Which files to clean, and where their outputs go.
struct BatchRequest {
    std::vector<std::string> paths;  ///< files, and folders if `recursive`
    bool recursive = false;
    std::string outputDir = {};  ///< mirrors the folders; empty for the folder of each input
    std::string suffix = {};     ///< between name and extension of the output
    std::string extension = {};  ///< of the outputs, without dot; empty for that of each input
    bool replace = false;        ///< outputs that exist already
    bool skipExisting = false;   ///< inputs whose output exists already
};

/// An input, and what becomes of it.
struct PlannedFile {
    enum class State : std::uint8_t { kToClean, kSkipped, kFailed };

    std::string input;
    std::string output;
    State state = State::kToClean;
    std::string reason;      ///< why it is not cleaned
    std::int64_t bytes = 0;  ///< of the input
};

/// Finds the inputs and names their outputs, without writing anything. Throws Failure if an output would be written
/// twice or replace an input.
std::vector<PlannedFile> PlanBatch(const BatchRequest& request);
