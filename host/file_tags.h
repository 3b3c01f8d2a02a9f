#pragma once

#include <string>
#include <vector>

#include "host/output_file.h"

/// What a file carries beside its audio, in the form of the output.
struct FileTags {
    std::vector<std::string> wavChunks;   ///< whole, even in length
    std::vector<std::string> flacBlocks;  ///< whole; the header's flag of the last one is not set
};

/// The tags of an input for a .wav or .flac output. From a file of the same format they are copied as they are: chunks such
/// as bext, cue, LIST, iXML and id3; comments, pictures and cue sheets. Otherwise texts and covers are converted.
/// @param extension of the output, in lower case
FileTags TagsFor(const std::string& input, const std::string& extension);

/// Appends chunks to a complete WAV or RF64 file. @return false if it cannot be written
bool AppendWavChunks(OutputFile& file, const std::vector<std::string>& chunks);

/// The length of a comment that reserves the room for blocks in the header of a FLAC file; 0 for none.
std::size_t RoomFor(const std::vector<std::string>& flacBlocks);

/// Puts the blocks in the place of that comment. @return false if the file cannot be written
bool PutFlacBlocks(OutputFile& file, const std::vector<std::string>& blocks);
