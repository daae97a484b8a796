/// What could not be read.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <exception>
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

// The same for what was thrown, which is in the record: of a `KorvelException` the message is the
// reason, and its error is in the record too.

void AddUnreadable(std::vector<Unreadable>& list, TPath const& path,
                   KorvelException const& failure);
void AddUnreadable(std::vector<Unreadable>& list, TPath const& path, std::exception const& failure,
                   TString const& reason);

} // namespace TextCensus
