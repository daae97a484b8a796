/// The report for programs.

#pragma once

#include "Totals.h"

#include "korcoreplatform/main/string/TString.h"

namespace TextCensus {

/// One JSON object with what the table shows, and every file with replaced bytes.
TString JsonReport(Totals const& totals);

} // namespace TextCensus
