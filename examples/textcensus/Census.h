/// Everything that a report is about.

#pragma once

#include "FileComparison.h"
#include "Totals.h"

#include <optional>

namespace TextCensus {

struct Census
{
    Totals totals;
    std::optional<FileComparison> comparison; ///< If it was asked for.
};

} // namespace TextCensus
