/// The report for people.

#pragma once

#include "korcoreplatform/main/string/TString.h"

namespace TextCensus {

struct Census;

/// A table of the groups, then the lists of files and what `file` says. Every list but that of the
/// files that could not be read is cut after ten.
TString TableReport(Census const& census);

} // namespace TextCensus
