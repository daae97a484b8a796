/// Counts files, on several threads.

#pragma once

#include "Totals.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace TextCensus {

/// How far the workers are.
struct Progress
{
    std::size_t files = 0;
    std::uint64_t bytes = 0;
};

/// Reads and counts `files` with `jobs` threads, each of which works for a session of its own whose
/// log records name the worker and `roots`. The totals do not depend on the number of threads.
/// `onProgress` hears on the calling thread how far they are, first when nothing is done yet.
/// Requires: at least one job.
/// Throws: `std::system_error` when the system gives no thread, `std::bad_alloc`.
Totals CountFiles(std::vector<TPath> const& files, unsigned int jobs, TString const& roots,
                  std::function<void(Progress const&)> const& onProgress);

} // namespace TextCensus
