/// The report for programs.

#pragma once

#include "korcoreplatform/main/string/TString.h"

namespace TextCensus {

struct Census;

/// One JSON object with what the table shows, and every file with replaced bytes.
TString JsonReport(Census const& census);

} // namespace TextCensus
