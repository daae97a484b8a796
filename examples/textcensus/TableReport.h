/// The report for people.

#pragma once

#include "Totals.h"

#include "korcoreplatform/main/string/TString.h"

namespace TextCensus {

/// A table of the groups, then the lists of files. Every list but that of the files that could not
/// be read is cut after ten.
TString TableReport(Totals const& totals);

} // namespace TextCensus
