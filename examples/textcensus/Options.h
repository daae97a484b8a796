/// The command line of textcensus.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <vector>

namespace TextCensus {

/// What the user asked for.
struct Options
{
    bool help = false;
    bool again = false; ///< The paths of the last census; no others are named then.
    bool compareWithFile = false;
    bool json = false;
    bool verbose = false;
    unsigned int jobs = 1;    ///< Threads that count; never 0.
    TPath logFolder;          ///< Empty when none was named, as the next one.
    TPath logConfig;          ///< A file.
    std::vector<TPath> roots; ///< Files and folders to count, in the order named.

    bool IsLogging() const { return verbose || !logFolder.IsEmpty() || !logConfig.IsEmpty(); }
    bool IsLogOnStandardError() const { return IsLogging() && logFolder.IsEmpty(); }
};

/// A command line that was read.
struct CommandLine
{
    Options options;
    TString problem; ///< What is wrong with the command line; empty when nothing is.
};

/// Reads the arguments; everything behind "--" is a path.
CommandLine ReadCommandLine(std::vector<TString> const& arguments);

/// What `--help` prints, and the one line that goes with a wrong command line.
TString HelpText();
TString UsageLine();

} // namespace TextCensus
