/// What the last census was of, kept in the user's settings.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"

#include <vector>

namespace TextCensus {

/// To be called once, before the other two.
void OpenSettings();

/// The paths of the last census, absolute; none before the first one.
std::vector<TPath> LastRoots();

/// Settings that cannot be written are no failure: the next census has no last one then.
void KeepRoots(std::vector<TPath> const& roots);

} // namespace TextCensus
