/// The command line of textcensus.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <filesystem>
#include <vector>

namespace TextCensus {

/// What the user asked for.
struct Options
{
    bool help = false;
    bool json = false;
    std::vector<std::filesystem::path> roots; ///< Files and folders to count, in the order named.
};

/// A command line that was read.
struct CommandLine
{
    Options options;
    TString problem; ///< What is wrong with the command line; empty when nothing is.
};

/// Reads the arguments; the first one is the program's name. Everything behind "--" is a path.
CommandLine ReadCommandLine(int argc, char const* const* argv);

/// What `--help` prints, and the one line that goes with a wrong command line.
TString HelpText();
TString UsageLine();

} // namespace TextCensus
