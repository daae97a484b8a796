/// Finds the files that a census counts.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

namespace TextCensus {

/// A file or folder that could not be read, and why.
struct Unreadable
{
    TString path;
    TString reason;
};

/// What a walk found.
struct FileList
{
    std::vector<std::filesystem::path> files; ///< In the order of their bytes.
    std::vector<Unreadable> unreadable;
    std::uint64_t skipped = 0; ///< Below folders: links to folders, and what is no file.
};

/// Lists the regular files among `roots` and below them; nothing is opened but folders. A link to
/// a file is that file; a link to a folder is followed only if it is one of the roots, so no walk
/// goes in circles. `onProgress` hears now and then how many files were found so far.
FileList ListFiles(std::vector<std::filesystem::path> const& roots,
                   std::function<void(std::size_t)> const& onProgress);

} // namespace TextCensus
