/// Paths as text.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <filesystem>

namespace TextCensus {

/// The path for reports. Bytes that are not UTF-8 become U+FFFD, so the text may not lead back to
/// the file.
TString TextOf(std::filesystem::path const& path);

/// The text with its control characters spelled out ("\x0A"): it stays on one line and cannot
/// steer a terminal.
TString Printable(TString const& text);

} // namespace TextCensus
