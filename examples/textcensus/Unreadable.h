/// What could not be read.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <vector>

class KorvelException;

namespace TextCensus {

/// A file or folder that could not be read, and why.
struct Unreadable
{
    TPath path;
    TString reason;
};

/// Lists it, and logs it at Warn.
void AddUnreadable(std::vector<Unreadable>& list, TPath const& path, TString const& reason);

/// The same with the failure's message as the reason; the record has its error too.
void AddUnreadable(std::vector<Unreadable>& list, TPath const& path,
                   KorvelException const& failure);

} // namespace TextCensus
