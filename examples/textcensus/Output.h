/// Finished text on its way out.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <string>

namespace TextCensus {

/// Writes the text in UTF-8 to the end. Returns 0, or the system's number of what went wrong.
int WriteToStandardOutput(TString const& text);

/// The same, where nobody could be told of a failure.
void WriteToStandardError(TString const& text);
void WriteToStandardError(std::string const& utf8);

} // namespace TextCensus
