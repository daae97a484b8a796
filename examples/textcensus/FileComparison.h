/// What the system's program `file` says of the same files.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <vector>

namespace TextCensus {

/// Files of which `file` says one thing and the census another.
struct Difference
{
    TString ours;
    TString theirs;
    std::size_t files = 0;
    TPath example; ///< The first of them.
};

/// A sample of the files, seen by both.
struct FileComparison
{
    std::size_t files = 0; ///< That both could read.
    std::size_t agreed = 0;
    std::vector<Difference> differences; ///< The most frequent first.
    TString problem;                     ///< Why files are missing here; empty when none are.
};

/// Asks `file` for the encodings of at most 500 of the files, evenly spread, and holds them against
/// those that the census finds. ASCII is UTF-8. Each run of `file` is logged.
/// Throws: `std::bad_alloc`.
FileComparison CompareWithFile(std::vector<TPath> const& files);

} // namespace TextCensus
