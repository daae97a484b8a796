/// Finds the files that a census counts.

#pragma once

#include "Unreadable.h"

#include "korcoreplatform/main/core/files/TPath.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace TextCensus {

/// What a walk found.
struct FileList
{
    /// Sorted. What leads nowhere is among them: opening it tells why.
    std::vector<TPath> files;
    std::vector<Unreadable> unreadable;
    std::uint64_t skipped = 0; ///< Below folders: links to folders, and what is no file.
};

/// Lists the regular files among `roots` and below them; nothing is opened but folders. A link to
/// a file is that file; a link to a folder is followed only if it is one of the roots, so no walk
/// goes in circles. `onProgress` hears now and then how many files were found so far. Each folder
/// is logged with the time it took.
FileList ListFiles(std::vector<TPath> const& roots,
                   std::function<void(std::size_t)> const& onProgress);

} // namespace TextCensus
