/// What the writer of log lines asks about the quarantine.

#pragma once

#include "korcoreplatform/main/string/TString.h"

namespace TLog {

/// The id as lines contain it, empty while there is none.
TString QuarantineText();

} // namespace TLog
